// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "tray/ScreenPoint.h"

#include <string>

namespace velmora {

/// What the tray icon and its menu show.
struct TrayState {
    double percentage = 0; ///< percent
    bool isCharging = false;
    std::string tooltip{};   ///< level and state, a sentence
    bool takesLimit = false; ///< the settings below have an effect here and now
    double limit = 80;       ///< percent, as the user wants it
    bool isAutoProtectOn = true;
    bool isQuickChargeOn = false;

    friend bool operator==(const TrayState&, const TrayState&) = default;
};

} // namespace velmora
