// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/BatteryReport.h"
#include "wire/ChargerReport.h"
#include "wire/VelmoraProtocol.h"

#include <string>
#include <vector>

namespace velmora::ctl {

/// What the daemon tells, all asked for at once.
struct Snapshot {
    HSBatteryState state;
    ChargerReport charger;
    ChargingSettings settings;
    std::vector<BatteryReport> batteries{};
    std::vector<std::string> others{}; ///< programs that run here and may write the same thresholds
};

} // namespace velmora::ctl
