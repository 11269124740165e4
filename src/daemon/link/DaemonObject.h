// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"
#include "base/Lifetime.h"
#include "bus/NameOwner.h"
#include "link/Authority.h"
#include "link/BatteryObjects.h"
#include "link/ChargerObject.h"
#include "link/Clients.h"
#include "link/ProtocolObject.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// The daemon on the system bus: owns the connection, the service name and what is served under it, and hears
/// of the machine's sleep.
///
/// Never waits for the bus. Main thread only. Callers who may not do something are the service's business;
/// what the bus itself cannot tell about a caller is refused here (see Callers), and so are those who ask for
/// the history more often than anybody needs (see CallBudget).
class DaemonObject {
public:
    /// Connects, exports the interfaces and asks for the service name, neither queueing for it nor leaving it
    /// to others; then `onOwned` or `onRefused` is called. A call that comes earlier waits: to be served, or
    /// for the bus to say whose it is, which it does after that. `service` and `log` must outlive the object.
    /// Throws std::system_error where there is no bus.
    DaemonObject(const EventLoop& loop, DaemonService& service, Log& log);
    DaemonObject(const DaemonObject&) = delete;
    DaemonObject& operator=(const DaemonObject&) = delete;

    /// The service's state is worth telling from now on. Whoever asked for it since the name was owned has
    /// waited for this.
    void serve() { clients_.serve(); }

    ProtocolObject& protocol() { return protocol_; }
    ChargerObject& charger() { return charger_; }
    /// Decides who may change what the charger does.
    Authority& authority() { return authority_; }
    BatteryObjects& batteries() { return batteries_; }

    /// Tells this bus from every other one, before and after; names of connections mean something on it
    /// alone. To be asked for once the name is owned: before, it would wait for the bus.
    std::string busId() const;

    /// Called once, when the service name is ours.
    std::function<void()> onOwned;
    /// Called once, when it cannot be had, with the reason as a phrase for the log.
    std::function<void(const std::string& why)> onRefused;

    /// Called when the machine has woken up, where logind is there to tell.
    std::function<void()> onResumed;

    /// Called when the machine is going to sleep; it waits, if `delaySleep` asked for that, until `done` is
    /// called.
    std::function<void(std::function<void()> done)> onSleep;

    /// Asks logind that the machine wait before it sleeps until what has to be done then is done, or takes
    /// that back. logind does not wait for long. Without logind nothing does.
    void delaySleep(bool isWanted);

    /// Called when the bus hung up, which it does only at its own end. Nobody can be served any more.
    std::function<void()> onBusLost;

private:
    int nameAnswered(sd_bus_message* reply);
    void publish();
    void followSleep();
    int introspect(sd_bus_message* call);
    int sleepChanged(sd_bus_message* signal);
    int sleepDelayed(sd_bus_message* reply);
    int disconnected(sd_bus_message* signal);

    Lifetime lifetime_;
    Log& log_;
    dbus::Bus bus_;
    Clients clients_;
    Authority authority_;
    ProtocolObject protocol_;
    ChargerObject charger_;
    BatteryObjects batteries_;
    dbus::Slot delayAsked_;          ///< the question to logind
    FileDescriptor sleepDelay_;      ///< the machine waits with its sleep for as long as this is open
    std::optional<NameOwner> login_; ///< logind: sleep signals of others are ignored
    std::vector<dbus::Slot> slots_;
};

} // namespace velmora
