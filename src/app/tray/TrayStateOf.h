// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "model/BatteryModel.h"
#include "tray/TrayState.h"
#include "wire/ChargerReport.h"

#include <cstdint>
#include <optional>

namespace velmora {

/// Whether the model's values are the daemon's.
enum class Freshness : std::uint8_t {
    pending, ///< not yet: they are what a model begins with
    live,
    stale, ///< no longer: the daemon is gone
};

/// What the tray icon shows of the model and of what the daemon reports of the charger. Where the values are
/// not the daemon's the tooltip says so, and the settings have no effect.
TrayState trayStateOf(const BatteryModel& model, const std::optional<ChargerReport>& charger,
                      Freshness freshness);

} // namespace velmora
