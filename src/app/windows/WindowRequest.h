// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "tray/ScreenPoint.h"

#include <optional>
#include <string>

namespace velmora {

/// A request to open a window.
struct WindowRequest {
    std::string window;              ///< of wire::windows
    bool isToggle = false;           ///< closes the window where it is open
    std::optional<ScreenPoint> at{}; ///< of the click; nothing where that is not known
    std::string token{};             ///< the desktop's leave to take the focus; may be empty
    bool takesFocus = true;          ///< otherwise a window that is open stays as it is
};

} // namespace velmora
