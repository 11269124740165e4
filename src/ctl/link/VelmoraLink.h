// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"
#include "link/Asker.h"
#include "link/ReadAnswer.h"
#include "wire/KeyedArchive.h"
#include "wire/ModelFace.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace velmora::ctl {

/// Reads a value of a message; `name` is the property's.
using ReadValue = std::function<void(sd_bus_message* message, std::string_view name)>;

/// Calls `read` for each property of `face` in the answer to a GetAll, and for no other. Throws a Failure for
/// an error, and for what is of another type than it should be.
void readProperties(const dbus::Message& reply, const wire::face::Face& face, const ReadValue& read);

/// Read the value of a message, as far as it is sound; texts are cut at a bounded length. A list stands for
/// its last member.
bool readTruth(sd_bus_message* message);
std::string readText(sd_bus_message* message);
std::optional<std::string> readOptionalText(sd_bus_message* message);
std::optional<Date> readDate(sd_bus_message* message);

/// An answer of the user's `velmora` that is nonsense.
Failure nonsenseOfVelmora();

/// An object of the user's `velmora`. Nothing starts it. Each call waits for its answer, and throws a Failure
/// where there is none that can be used.
class VelmoraLink {
public:
    /// `patience` is for an answer of any kind in place of the usual ones. Throws a Failure where there is no
    /// bus.
    VelmoraLink(EventLoop& loop, const wire::face::Face& face, std::optional<std::chrono::seconds> patience);

    /// The answer to a GetAll.
    dbus::Message properties();
    void set(const char* property, bool value);
    void operate(const char* operation);
    /// `record` may have a secret: nothing of it is logged, and it is overwritten once it is sent.
    void operate(const char* operation, KeyedArchive record);

    /// What `look` gives once `isSo` is true of it, or at the last look before patience ends.
    template <typename Look, typename IsSo>
    auto awaited(std::chrono::milliseconds interval, std::chrono::seconds patience, const Look& look,
                 const IsSo& isSo)
    {
        using Clock = std::chrono::steady_clock;
        const auto deadline = Clock::now() + asker_.patience().value_or(patience);
        for (;;) {
            auto now = look();
            if (isSo(now) || Clock::now() > deadline) return now;
            std::this_thread::sleep_for(interval);
        }
    }

private:
    dbus::Message call(const char* interface, const char* member) const;
    void expectDone(dbus::Message call);

    wire::face::Face face_;
    Asker asker_;
};

} // namespace velmora::ctl
