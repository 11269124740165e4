// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "tray/ScreenPoint.h"

#include <string>

namespace velmora {

/// What the tray icon shows.
struct TrayState {
    double percentage = 0; ///< percent
    bool isCharging = false;
    std::string tooltip; ///< a sentence

    friend bool operator==(const TrayState&, const TrayState&) = default;
};

} // namespace velmora
