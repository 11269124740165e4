// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "desktop/Screens.h"

#include <QPoint>
#include <QSize>
#include <vector>

namespace velmora {

/// The top left corner of a widget that is to be at `wanted`: there, or as near as possible inside the work
/// area of the screen that shows most of it, or of the nearest screen where none does. The
/// first of `screens` is the primary one; there must be one.
QPoint widgetPlace(QPoint wanted, const std::vector<ScreenArea>& screens, QSize widget);

/// For a widget that was never moved: at the right of the primary screen, `top` pixels below its top.
QPoint firstWidgetPlace(const std::vector<ScreenArea>& screens, QSize widget, int below);

} // namespace velmora
