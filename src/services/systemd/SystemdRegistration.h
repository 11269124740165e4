// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "base/Lifetime.h"
#include "bus/DBus.h"
#include "bus/NameOwner.h"
#include "platform/ServiceManager.h"

#include <optional>
#include <string>

namespace velmora {

namespace systemd {
inline constexpr auto serviceName = "org.freedesktop.systemd1";
inline constexpr auto objectPath = "/org/freedesktop/systemd1";
inline constexpr auto managerInterface = "org.freedesktop.systemd1.Manager";

/// A call to systemd's manager that starts no service. Throws std::system_error.
dbus::Message newCall(sd_bus* bus, const char* member);
} // namespace systemd

/// One attempt to have systemd enable a unit and start it now. systemd asks polkit before each step. polkit
/// asks the user once: the authorisation to manage unit files, which comes first, implies the others and is
/// kept for a while.
///
/// It waits as long as the prompt is open. It fails without systemd, and when systemd or the bus ends
/// meanwhile. Destroying it cancels nothing that systemd was already asked to do. Loop's thread only.
class SystemdRegistration {
public:
    /// `done` is called once, later, and may destroy this. A unit that was enabled before is started, too,
    /// and counts as alreadyRegistered. `loop` must outlive this.
    SystemdRegistration(EventLoop& loop, std::string unit, ServiceManager::Completion done);
    SystemdRegistration(const SystemdRegistration&) = delete;
    SystemdRegistration& operator=(const SystemdRegistration&) = delete;

private:
    using Step = void (SystemdRegistration::*)(sd_bus_message* reply);

    void enable();
    void enabled(sd_bus_message* reply);
    void reloaded(sd_bus_message* reply);
    void started(sd_bus_message* reply);
    int jobRemoved(sd_bus_message* signal);
    int disconnected(sd_bus_message* signal);

    template <Step Next, typename... Arguments>
    void call(const char* member, const char* types, Arguments... arguments);
    template <Step Next>
    int answered(sd_bus_message* reply);
    void fail(ServiceManager::ErrorCode code, std::string description);
    void finish(std::optional<ServiceManager::Error> error);

    Lifetime lifetime_;
    EventLoop& loop_;
    std::string unit_;
    ServiceManager::Completion done_;
    bool isOver_ = false;
    bool wasEnabled_ = false;
    std::string job_; ///< path; empty until there is one
    dbus::Bus bus_;
    std::optional<NameOwner> manager_; ///< whose signals count
    dbus::Slot disconnection_, jobs_, call_;
};

} // namespace velmora
