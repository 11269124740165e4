// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/FleetSnapshot.h"
#include "output/Json.h"

#include <string>

/// What is told of the fleet, for a person and for scripts.
namespace velmora::ctl {

/// How this machine takes part.
std::string fleetText(const FleetSnapshot& now);
/// Under the names that all has on the bus; dates in UTC.
Json fleetJson(const FleetSnapshot& now);

/// A few lines for each machine; `time` is when they are read.
std::string devicesText(const FleetSnapshot& now, Date time);
/// A list of records, as they stand in the store, each with whether it is this machine.
Json devicesJson(const FleetSnapshot& now);

} // namespace velmora::ctl
