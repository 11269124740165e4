// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/CallBudget.h"
#include "link/Clients.h"
#include "link/InterfaceTable.h"

namespace velmora {

/// The daemon's end of the wire to the application: answers with state and history, takes settings and the
/// charging toggle, and pushes the state. Names, types and order are those of wire::daemon_protocol and
/// wire::client_protocol. Main thread only.
class ProtocolObject {
public:
    /// Messages that the bus has not taken yet; with more, nobody is given a history.
    static constexpr std::uint64_t maximumUnsent = 256;

    /// All must outlive the object. Nobody is served before `publish`.
    ProtocolObject(sd_bus* bus, Clients& clients, DaemonService& service);

    /// Throws std::system_error where the bus takes no objects.
    void publish();

    /// Sends `state` to every client that listens, or to the connection `to` alone.
    void push(const HSBatteryState& state, const std::string& to = {});

private:
    int getBatteryState(sd_bus_message* call);
    int getAnalyticsHistory(sd_bus_message* call);
    int updateSettings(sd_bus_message* call);
    int toggleCharging(sd_bus_message* call);
    void answerState(sd_bus_message* call);
    void answerHistory(sd_bus_message* call, uid_t user);

    sd_bus* bus_;
    Clients& clients_;
    DaemonService& service_;
    CallBudget histories_;
    InterfaceTable table_;
    dbus::Slot slot_;
};

} // namespace velmora
