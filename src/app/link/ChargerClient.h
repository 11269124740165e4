// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "bus/NameOwner.h"
#include "platform/Complaints.h"
#include "wire/ChargerReport.h"
#include "wire/KeyedArchive.h"

#include <functional>
#include <optional>
#include <string>

namespace velmora {

/// Follows what the daemon tells of the charger: the properties of app.velmora.Charger. Never waits, starts
/// no daemon; a property that did not come, or of another type, has the report's default. Loop's thread only.
class ChargerClient {
public:
    /// `daemon` says whose signals count. All must outlive the client. Throws std::system_error where the
    /// connection is gone.
    ChargerClient(sd_bus* bus, const NameOwner& daemon, Complaints& complaints);
    ChargerClient(const ChargerClient&) = delete;
    ChargerClient& operator=(const ChargerClient&) = delete;

    /// Nothing while there is no daemon, or before it has answered.
    const std::optional<ChargerReport>& report() const { return report_; }
    /// Called when the daemon has told something new; may destroy the client.
    std::function<void()> onChange;

    /// Asks a daemon that may have appeared.
    void fetch();
    /// The daemon is gone: clears the report; does not call `onChange`.
    void forget();

private:
    int answered(sd_bus_message* reply);
    int changed(sd_bus_message* signal);
    std::optional<KeyedArchive> read(sd_bus_message* message);
    void complain(const std::string& why);
    void set(ChargerReport report);

    sd_bus* bus_;
    const NameOwner& daemon_;
    Complaints& complaints_;
    std::optional<ChargerReport> report_;
    dbus::Slot changes_;
    dbus::Slot question_;
};

} // namespace velmora
