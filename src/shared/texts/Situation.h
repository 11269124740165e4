// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "model/BatteryModel.h"
#include "wire/ChargerReport.h"

#include <cstdint>
#include <optional>

namespace velmora {

/// What the battery does, what the user wants and what is in force: the input of all texts.
struct Situation {
    double percentage = 50;
    bool isCharging = false;
    bool isOnBattery = false;
    std::int64_t timeToFull = -1; ///< minutes; -1 unknown, -2 still being worked out
    std::int64_t timeToEmpty = -1;
    std::int64_t timeToLimit = -1; ///< to `limit`
    bool isAutoProtectOn = true;   ///< as the user wants it
    double limit = 80;             ///< percent, as the user wants it
    /// What the daemon reports of the charger; nothing while there is no daemon.
    std::optional<ChargerReport> charger{};
    bool isSimulated = false; ///< the demonstration's battery
};

/// That of a model, with what the daemon reports beside it.
Situation situationOf(const BatteryModel& model, std::optional<ChargerReport> charger);

/// The values are those of a battery, and not the initial ones of a model.
bool isWatched(const Situation& now);

/// The daemon has looked and found no battery.
bool isBatteryMissing(const Situation& now);

} // namespace velmora
