// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "desktop/Layers.h"
#include "desktop/Screens.h"

#include <QPoint>
#include <QSize>
#include <cstddef>
#include <optional>
#include <vector>

namespace velmora {

/// Where the panel opens after a click on the tray icon at `click`, in the display's native pixels: below the
/// icon, or above it on a bar at the bottom, and inside the work area. A click that cannot be right, as where
/// no bar could be, or counted from the icon's own corner, is as an unknown one: then it is the corner at the
/// right, at the top unless the bar is at the bottom. The first of `screens` is the primary one; there must
/// be one.
///
/// This is the panel's top left corner.
QPoint panelPlace(std::optional<QPoint> click, const std::vector<ScreenArea>& screens, QSize panel);

/// The same for a layer surface, of which the compositor alone knows what bars leave.
struct PanelLayer {
    std::size_t screen; ///< of `screens`
    layers::Place place;

    bool operator==(const PanelLayer&) const = default;
};
PanelLayer panelLayer(std::optional<QPoint> click, std::vector<ScreenArea> screens, QSize panel);

} // namespace velmora
