// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "battery/BatteryDataSource.h"

#include <optional>
#include <string>

namespace velmora {

class BatteryModel;

/// Decides after an update of the model whether what changed is worth a notice, and posts it. Only while one
/// of the user's devices is selected: what this laptop's own battery does is told by who governs its charger.
///
/// Nothing is repeated before it has been over: a limit before the level has been well below it or charging
/// has gone on, a low battery before it was charged. Every run begins afresh. Main thread only.
class NotificationTriggers {
public:
    /// `model` shows the values after the update, the others are those before. No power source is none to
    /// compare with.
    void check(const BatteryModel& model, ChargingState oldChargingState,
               const std::optional<std::string>& oldPowerSource);

private:
    void checkPowerSource(const BatteryModel& model, const std::optional<std::string>& oldPowerSource);
    void checkLimit(const BatteryModel& model, ChargingState oldChargingState);
    void checkLowBattery(const BatteryModel& model);

    bool hasNotifiedLimitReached_ = false;
    std::optional<double> lastNotifiedPercentage_; ///< of a low battery; absent: not since it was charged
};

} // namespace velmora
