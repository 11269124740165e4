// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "bus/DBus.h"
#include "platform/Log.h"

#include <cstdint>
#include <functional>

namespace velmora {

/// The user's session bus, and this program's name on it, which only one can have. Main thread only.
class SessionBus {
public:
    enum class Role : std::uint8_t {
        primary,   ///< this program has the name
        secondary, ///< another one has it
        noBus,     ///< there is no bus, or it does not answer
    };

    /// Serves the loop until the bus has answered, a few seconds at most, or the loop is stopped; where there
    /// is no bus, that is a line in the log.
    SessionBus(EventLoop& loop, Log& log);
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    Role role() const { return role_; }

    /// Null where this program is alone.
    sd_bus* handle() const { return bus_.get(); }

    /// Called when the bus closes the connection: the session is over.
    std::function<void()> onLost;

    /// Has the program that owns the name take the action, a null one by opening its panel, and waits a few
    /// seconds for its word. Whether it did.
    bool forward(const char* action);

private:
    void connect(EventLoop& loop);
    int named(sd_bus_message* reply);
    int disconnected(sd_bus_message* signal);

    Log& log_;
    dbus::Bus bus_;
    dbus::Slot disconnection_;
    dbus::Slot naming_;
    Role role_ = Role::noBus;
    bool isNamed_ = false; ///< the bus has said whose the name is
};

} // namespace velmora
