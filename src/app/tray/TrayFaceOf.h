// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "model/BatteryModel.h"
#include "tray/TrayFace.h"

#include <cstdint>

namespace velmora {

/// Whose word the model's values are.
enum class Knowledge : std::uint8_t {
    awaited,       ///< nobody's yet: they are what a model begins with
    live,          ///< the daemon's
    daemonMissing, ///< nobody's any more
};

/// What the tray icon shows of the model. The tooltip says so where its values are not the daemon's.
TrayFace trayFaceOf(const BatteryModel& model, Knowledge knowledge);

} // namespace velmora
