// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "fleet/FleetArchive.h"
#include "link/FleetSnapshot.h"
#include "options/FleetWords.h"

#include <string_view>

/// One of the fleet's machines, and what it is to take over.
namespace velmora::ctl {

/// The machine that a person means by an identifier, a name, or the beginning of an identifier; capitals do
/// not count. Throws a Failure where that is none, several, or this one.
DeviceReport otherMachine(const FleetSnapshot& now, std::string_view meant);

/// What is in force there, or was last commanded and is yet to be taken over, with the one value that is
/// asked for. Throws a Failure where that machine takes no commands.
FleetCommand commandFor(const DeviceReport& device, const FleetRequest& request, Date now);

bool isListed(const FleetSnapshot& now, const DeviceReport& device);
/// That command stands in its record, given after the one that stood there in `before`.
bool isCommanded(const FleetSnapshot& now, const DeviceReport& before, const FleetCommand& command);

} // namespace velmora::ctl
