// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Screens.h"

#include <QGuiApplication>
#include <QScreen>

namespace velmora {

std::vector<ScreenArea> presentScreens()
{
    std::vector<ScreenArea> areas; // Qt's first screen is the primary one
    for (const auto* screen : QGuiApplication::screens())
        areas.push_back({screen->geometry(), screen->availableGeometry(), screen->devicePixelRatio()});
    return areas;
}

} // namespace velmora
