// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/Clients.h"
#include "link/InterfaceTable.h"
#include "wire/ChargerInterface.h"

#include <string>

namespace velmora {

/// app.velmora.Charger as wire::charger declares it: the report as read-only properties, the settings as they
/// are held, changes of single ones, pausing and resuming. Main thread only.
class ChargerObject {
public:
    /// All must outlive the object. Nobody is served before `publish`.
    ChargerObject(sd_bus* bus, Clients& clients, DaemonService& service);

    /// Throws std::system_error where the bus takes no objects.
    void publish();

    /// Announces the properties in which `report` differs from the last one.
    void changed(const ChargerReport& report);
    /// Tells every client, or the connection `to` alone, that these settings have changed.
    void settingsChanged(const KeyedArchive& settings, const std::string& to = {});
    /// Tells every client of something that may be worth a notice.
    void occurred(const ChargeEvent& event);
    /// Tells the connection `to` why the settings that it sent were refused.
    void changeRefused(Refused why, const std::string& to);

private:
    int getSettings(sd_bus_message* call);
    int setSettings(sd_bus_message* call);
    template <ChargingCommand command>
    int control(sd_bus_message* call);
    int getActions(sd_bus_message* call);
    int beginTravelCharge(sd_bus_message* call);
    int propertiesAsked(sd_bus_message* call);
    void answerSettings(sd_bus_message* call, const ChargingSettings& settings);
    void answerChange(sd_bus_message* call, const std::variant<ChargingSettings, Refusal>& outcome);
    void answerProperties(sd_bus_message* call, const std::string& name);
    static int property(sd_bus* bus, const char* path, const char* interface, const char* name,
                        sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;

    sd_bus* bus_;
    Clients& clients_;
    DaemonService& service_;
    KeyedArchive announced_; ///< the properties as clients know them
    InterfaceTable table_;
    dbus::Slot members_;
    dbus::Slot questions_; ///< for the properties
};

} // namespace velmora
