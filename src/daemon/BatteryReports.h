// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "power/PowerSupplyReader.h"
#include "wire/BatteryReport.h"

#include <vector>

namespace velmora {

/// What clients are told of these batteries.
std::vector<BatteryReport> batteryReports(const std::vector<BatteryReading>& batteries);

} // namespace velmora
