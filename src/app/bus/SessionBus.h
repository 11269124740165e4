// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "Options.h"
#include "base/EventLoop.h"
#include "bus/DBus.h"
#include "platform/Log.h"

#include <cstdint>
#include <functional>

namespace velmora {

/// The user's session bus, and this program's name on it, which only one can have. Main thread only.
class SessionBus {
public:
    enum class Standing : std::uint8_t {
        only,   ///< this program has the name
        second, ///< another one has it
        alone,  ///< there is no bus, or it does not answer
    };

    /// Serves the loop until the bus has answered, a few seconds at most, or the loop is stopped; where there
    /// is no bus, that is a line in the log.
    SessionBus(EventLoop& loop, Log& log);
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    Standing standing() const { return standing_; }

    /// Null where this program is alone.
    sd_bus* handle() const { return bus_.get(); }

    /// Called when the bus hangs up: the session is over.
    std::function<void()> onLost;

    /// Has the program that owns the name run the errand, and waits a few seconds for its word. Whether it
    /// did.
    bool forward(Errand errand);

private:
    void connect(EventLoop& loop);
    int named(sd_bus_message* reply);
    int disconnected(sd_bus_message* signal);

    Log& log_;
    dbus::Bus bus_;
    dbus::Slot disconnection_;
    dbus::Slot naming_;
    Standing standing_ = Standing::alone;
    bool isNamed_ = false; ///< the bus has said whose the name is
};

} // namespace velmora
