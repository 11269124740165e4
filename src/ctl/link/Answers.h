// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "link/Failure.h"
#include "wire/BatteryReport.h"
#include "wire/KeyedArchive.h"
#include "wire/VelmoraProtocol.h"

#include <string>
#include <vector>

/// What stands in answers of the daemon, which may be of another version, or another program that took its
/// name. The readers throw a Failure for an error and for what is of another type than it should be.
namespace velmora::ctl {

/// The daemon has not answered in time.
Failure unansweredFailure();

KeyedArchive readRecord(const dbus::Message& reply);
bool readTruth(const dbus::Message& reply);
std::vector<KeyedArchive> readRecords(const dbus::Message& reply);
/// None where the daemon does not know of them.
std::vector<BatteryReport> readBatteries(const dbus::Message& reply);

/// Asks the service manager for the programs that are known to write charge thresholds.
dbus::Message otherProgramsCall(sd_bus* bus);
/// Names of those that are active, for a person; none where that cannot be told.
std::vector<std::string> readOtherPrograms(const dbus::Message& reply);

/// Asks UPower, which runs on most desktops, whether it holds this battery at thresholds of its own.
dbus::Message upowerCall(sd_bus* bus, const BatteryReport& battery);
/// False where that cannot be told.
bool doesUPowerLimit(const dbus::Message& reply);

} // namespace velmora::ctl
