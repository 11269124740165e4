// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "desktop/NotificationMessages.h"
#include "platform/MainLoop.h"
#include "platform/NotificationCenter.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Everything there is under one identifier: the notice that stands at the server, the one that is on its way
/// there, and the last one that came meanwhile. The server's number is known only once it has answered, so a
/// notice on its way is waited for before another takes its place, or before it is taken back.
///
/// Loop's thread only; never blocks.
class DesktopNotice {
public:
    using Completion = NotificationCenter::Completion;
    /// How long a server may take to show a notice. One that is later shows it no more: the sender has been
    /// told that it failed.
    static constexpr std::chrono::seconds patience{25};

    /// What all notices share; outlives them.
    struct Desk {
        MainLoop& loop;
        sd_bus* bus;
        notifications::Sender sender;
    };

    /// `over` is called when nothing is left here, and may destroy this.
    DesktopNotice(const Desk& desk, std::string identifier, std::function<void()> over);
    DesktopNotice(const DesktopNotice&) = delete;
    DesktopNotice& operator=(const DesktopNotice&) = delete;

    void show(NotificationRequest request, Completion completed);
    /// Takes back what is on its way.
    void takeBack();
    /// Takes away what stands and is not about to be replaced.
    void remove();

    /// The notice that stands does so no more, and its number may be another program's.
    void forget();

    const std::string& identifier() const { return identifier_; }
    /// The notice that stands here has that number at `server`.
    bool stands(std::string_view server, std::uint32_t number) const
    {
        return number_ != 0 && number == number_ && server == server_;
    }
    bool isUnderWay() const { return call_ != nullptr; }
    std::size_t waiting() const { return sent_.size() + waiting_.size() + (isUnderWay() ? 1 : 0); }

    /// The leave to take the focus that the server gives with the next response.
    void keepToken(std::string token) { token_ = std::move(token); }
    /// A person's, once for each notice; nothing for an action that the notice does not have.
    std::optional<NotificationResponse> respond(std::string_view action);

private:
    void begin();
    int prepared(sd_bus_message* reply);
    int shown(sd_bus_message* reply);
    void send(const std::string& server, const notifications::Capabilities& capabilities);
    void failNext(const std::string& error);
    void finish();
    void giveUp();
    void close();
    void over() const;

    const Desk& desk_;
    std::string identifier_;
    std::function<void()> over_;
    std::uint32_t number_ = 0; ///< of the notice that stands; 0: none
    std::string server_;       ///< where, by the name of its connection, which no other one ever has
    std::vector<NotificationAction> actions_; ///< of the notice that stands or is on its way
    std::optional<NotificationRequest> next_;
    std::vector<Completion> waiting_, sent_; ///< who waits for `next_`, and for what is on its way
    bool isTakenBack_ = false;
    bool hasResponse_ = false;
    std::string token_;
    dbus::Slot call_;
    MainLoop::Timer deadline_;
};

} // namespace velmora
