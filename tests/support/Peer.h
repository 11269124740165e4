// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "bus/DBus.h"
#include "wire/VelmoraProtocol.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// A connection that follows no rules of ours: another application, or a daemon that lies. Calls wait for
/// their answer; pushes arrive while `loop` is served.
class Peer {
public:
    explicit Peer(const EventLoop& loop);

    sd_bus* bus() const { return bus_.get(); }
    std::string name() const;

    /// Returns when the bus has dealt with all that was sent.
    void sync();
    void hangUp() { bus_.reset(); }

    /// Poses as the daemon.
    void serve(std::function<int(sd_bus_message* call)> answer);

    std::vector<HSBatteryState> pushes; ///< of the daemon, to all or to this one

    /// A message to the daemon, one of ours or any other.
    dbus::Message call(const wire::Message& message) const;
    dbus::Message call(const char* path, const char* interface, const char* member) const;
    dbus::Message call(const ChargingSettings& settings) const;

    /// The answer; null for an error, whose name is then `lastError`.
    dbus::Message ask(const dbus::Message& call);
    /// A signal with what `append` puts into it: to `to`, or to all.
    template <typename Append>
    void say(const char* path, const char* interface, const char* member, Append append,
             const char* to = nullptr) const
    {
        dbus::Message signal;
        dbus::check(sd_bus_message_new_signal(bus(), out(signal), path, interface, member), member);
        append(signal.get());
        dbus::check(sd_bus_send_to(bus(), signal.get(), to, nullptr), member);
    }
    /// Sends and expects no answer.
    void tell(const dbus::Message& call) const;
    std::string lastError;

    /// All settings, as an application sends them: nothing comes back.
    void send(const ChargingSettings& settings) const { tell(call(settings)); }
    /// The same, waiting until the daemon has looked at them. Whether it has.
    bool set(const ChargingSettings& settings) { return ask(call(settings)) != nullptr; }

    /// Nothing where no daemon answers. All that this peer sent before has then reached the daemon.
    std::optional<HSBatteryState> state();
    std::optional<std::vector<HSHistorySnapshot>> history();

    std::string introspection();
    /// Property of the charger's interface; -1 where it cannot be read.
    std::int64_t number(const char* property);

private:
    int pushed(sd_bus_message* signal);
    int called(sd_bus_message* call) { return answer_(call); }

    std::function<int(sd_bus_message*)> answer_;
    dbus::Bus bus_;
    dbus::Slot match_, object_;
};

} // namespace velmora
