// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "fleet/DeviceReport.h"
#include "fleet/FleetArchive.h"
#include "platform/RecordStores.h"

#include <string>

/// What a person reads of the fleet and of the place of its records, and what a command begins with.
namespace velmora::fleet {

/// Where the records live.
std::string placeText(const RecordPlace& place);
/// What a place lacks before it can be tried or used; empty: nothing.
std::string missingText(const RecordPlace& place);
/// What keeps the records there from being reached, and what helps; empty for `none`.
std::string problemText(RecordFault fault, const RecordPlace& place);
/// What a test of that place has found.
std::string testText(RecordFault found, const RecordPlace& place);
/// What a machine that has left is told where its record could not be removed.
std::string recordLeftText();
/// What a list of so many machines does not show; empty: nothing.
std::string listEndText(std::size_t listed);

/// One line; never empty.
std::string nameOf(const DeviceReport& device, bool isThisMachine = false);
/// What its battery does, and when it said so: "Charging, heat: Fair, 3 minutes ago".
std::string statusText(const DeviceReport& device, Date now);

/// "Limit 80%, Auto-Protect on, storage mode off", as it is in force there; empty while not known.
std::string inForceText(const DeviceReport& device);
/// Why it cannot be sent a command; empty: it can.
std::string obstacleText(const DeviceReport& device);
/// What the next command to it begins with: the last one while that is on its way, what is in force else. Its
/// limit may be below what a command can set, where that is in force.
FleetCommand suggested(const DeviceReport& device, Date now);
/// What is to be said of a limit that a command does not change; empty: nothing.
std::string lowLimitText(const DeviceReport& device);
/// What became of the last command; empty where there was none.
std::string commandText(const DeviceReport& device, Date now);

} // namespace velmora::fleet
