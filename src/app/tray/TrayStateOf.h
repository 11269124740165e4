// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "model/BatteryModel.h"
#include "tray/TrayState.h"

#include <cstdint>

namespace velmora {

/// Whose word the model's values are.
enum class Freshness : std::uint8_t {
    pending, ///< nobody's yet: they are what a model begins with
    live,    ///< the daemon's
    stale,   ///< nobody's any more
};

/// What the tray icon shows of the model. The tooltip says so where its values are not the daemon's.
TrayState trayStateOf(const BatteryModel& model, Freshness freshness);

} // namespace velmora
