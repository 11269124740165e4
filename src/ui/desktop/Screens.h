// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QRect>
#include <vector>

namespace velmora {

/// A monitor. Rectangles are in the pixels that windows are measured in; each is `scale` of the display's.
struct ScreenArea {
    QRect geometry;
    QRect available; ///< what bars leave
    double scale = 1;
};

/// Those of the display, the primary one first.
std::vector<ScreenArea> presentScreens();

} // namespace velmora
