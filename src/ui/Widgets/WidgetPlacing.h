// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "desktop/Screens.h"

#include <QPoint>
#include <QSize>
#include <vector>

namespace velmora {

/// Where the top left corner of a widget goes that was wanted at `wanted`: there, or as near as possible
/// inside what bars leave of the screen that shows most of it, or of the nearest one where none does. The
/// first of `screens` is the primary one; there must be one.
QPoint widgetPlace(QPoint wanted, const std::vector<ScreenArea>& screens, QSize widget);

/// For one that nobody has moved yet: at the right of the primary screen, so far below its top.
QPoint firstWidgetPlace(const std::vector<ScreenArea>& screens, QSize widget, int below);

} // namespace velmora
