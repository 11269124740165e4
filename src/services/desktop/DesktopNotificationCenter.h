// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "bus/NameOwner.h"
#include "desktop/DesktopNotice.h"
#include "desktop/NotificationServerFacts.h"
#include "platform/MainLoop.h"
#include "platform/NotificationCenter.h"

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

/// The notification server of the user's desktop, over the session bus; the bus starts one where none runs
/// and it knows how. The server's word is taken for granted only about our own notices, and only from the
/// connection that has its name.
///
/// Leave to show notices is there as soon as a server is. All of it is answered on the loop's thread, never
/// from inside the call.
class DesktopNotificationCenter final : public NotificationCenter {
public:
    /// Of notices that wait for the server; those beyond fail.
    static constexpr std::size_t maximumWaiting = 64;
    /// Of notices that are followed; the oldest beyond may stay on the screen, and a click on it does
    /// nothing.
    static constexpr std::size_t maximumFollowed = 128;

    /// A null `session` is none: every notice fails. `loop` must outlive the object.
    DesktopNotificationCenter(MainLoop& loop, sd_bus* session, notifications::Sender sender);
    DesktopNotificationCenter(const DesktopNotificationCenter&) = delete;
    DesktopNotificationCenter& operator=(const DesktopNotificationCenter&) = delete;

    void requestAuthorization(Authorization answered) override;
    void add(NotificationRequest request, Completion completed) override;
    void removePending(std::vector<std::string> identifiers) override;
    void removeDelivered(std::vector<std::string> identifiers) override;

    Subscription observeResponses(std::function<void(const NotificationResponse&)> responded) override
    {
        return responses_.observe(std::move(responded));
    }
    NotificationServer server() const override { return facts_ ? facts_->now() : NotificationServer{}; }
    Subscription observeServer(std::function<void()> changed) override
    {
        return serverChanges_.observe(std::move(changed));
    }

private:
    void listen();
    void follow();
    void show(NotificationRequest request, Completion completed);
    DesktopNotice& noticeOf(const std::string& identifier);
    DesktopNotice* find(const std::string& identifier);
    /// The notice that the owner of the server's name means by that number.
    DesktopNotice* meantBy(sd_bus_message* signal, const char*& text, const char* types);
    void forgetOldest();
    void serverChanged();
    int invoked(sd_bus_message* signal);
    int closed(sd_bus_message* signal);
    int tokenGiven(sd_bus_message* signal);

    Lifetime lifetime_;
    MainLoop& loop_;
    Handle<sd_bus, sd_bus_unref> bus_; ///< null: none
    DesktopNotice::Desk desk_;
    Signal<NotificationResponse> responses_;
    Signal<> serverChanges_;
    std::list<DesktopNotice> notices_; ///< oldest first
    std::vector<dbus::Slot> signals_;
    std::optional<NameOwner> owner_;
    std::optional<NotificationServerFacts> facts_;
};

} // namespace velmora
