// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "desktop/Screens.h"

#include <QPoint>
#include <QSize>
#include <optional>
#include <vector>

namespace velmora {

/// Where the top left corner of the panel goes when the tray icon was clicked at `click`, in the display's
/// own pixels: under the icon, or above it on a bar at the bottom, and inside what bars leave. Where the
/// place of the click is not known, or is none where a bar would be, the top right corner. The first of
/// `screens` is the primary one; there must be one.
QPoint panelPlace(std::optional<QPoint> click, const std::vector<ScreenArea>& screens, QSize panel);

} // namespace velmora
