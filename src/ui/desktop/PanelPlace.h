// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "desktop/Screens.h"

#include <QPoint>
#include <QSize>
#include <optional>
#include <vector>

namespace velmora {

/// The panel's top left corner after a click on the tray icon at `click`, in the display's native pixels:
/// below the icon, or above it on a bar at the bottom, and inside the work area. The top right corner where
/// the click is unknown or is not where a bar could be. The first of `screens` is the primary one; there must
/// be one.
QPoint panelPlace(std::optional<QPoint> click, const std::vector<ScreenArea>& screens, QSize panel);

} // namespace velmora
