// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/Clients.h"
#include "wire/BatteryReport.h"

#include <map>
#include <string>
#include <vector>

namespace velmora {

/// The batteries on the bus, as wire::battery declares it: an object of app.velmora.Battery each, which comes
/// and goes with its battery, below an org.freedesktop.DBus.ObjectManager. Who asks is answered with what a
/// fresh look shows.
///
/// sd-bus's own tables cannot leave a property out; so the calls are answered here. Main thread only.
class BatteryObjects {
public:
    /// All must outlive the object. Nobody is served before `publish`.
    BatteryObjects(sd_bus* bus, Clients& clients, DaemonService& service);

    /// Throws std::system_error where the bus takes no objects.
    void publish();

    /// Announces batteries that came, batteries that went, and in what the others differ from the last time.
    void changed(const std::vector<BatteryReport>& batteries);

private:
    using Objects = std::map<std::string, KeyedArchive>; ///< the properties, by path

    static Objects objects(const std::vector<BatteryReport>& batteries);
    int asked(sd_bus_message* call);
    int folderAsked(sd_bus_message* call);
    int propertiesAsked(sd_bus_message* call);
    void answerObjects(sd_bus_message* call);
    void answerIntrospection(sd_bus_message* call);
    void answerProperties(sd_bus_message* call, const std::string& name);
    void announceNew(const std::string& path, const KeyedArchive& battery);
    void announceGone(const std::string& path);
    void announceChanges(const std::string& path, const KeyedArchive& before, const KeyedArchive& now);

    sd_bus* bus_;
    Clients& clients_;
    DaemonService& service_;
    Objects announced_; ///< the batteries as clients know them
    dbus::Slot slot_;
};

} // namespace velmora
