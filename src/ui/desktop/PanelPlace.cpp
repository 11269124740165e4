// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/PanelPlace.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr int margin = 4;      // to what bars leave
constexpr int iconRadius = 12; // a click is somewhere on the icon
constexpr int barDepth = 64;   // how far from the screen's edge a tray icon can be
constexpr int usualBar = 32;   // depth assumed where the work area is unknown, as without a window manager

/// Qt scales the size of a screen, but leaves its corner where the display has it.
QRect nativeGeometry(const ScreenArea& screen)
{
    return {screen.geometry.topLeft(), screen.geometry.size() * screen.scale};
}

QPoint logical(QPoint native, const ScreenArea& screen)
{
    const auto corner = screen.geometry.topLeft();
    return corner + (native - corner) / screen.scale;
}

bool isOnBar(QPoint click, const QRect& screen)
{
    if (click == screen.topLeft()) return false; // sent by hosts that do not know the place
    return !screen.adjusted(barDepth, barDepth, -barDepth, -barDepth).contains(click);
}

/// Nearest to `wanted` within the room; at its beginning where that is too small.
int fitted(int wanted, int begin, int end, int length)
{
    return std::max(begin + margin, std::min(wanted, end - margin - length));
}

} // namespace

QPoint panelPlace(std::optional<QPoint> click, const std::vector<ScreenArea>& screens, QSize panel)
{
    auto screen = screens.begin();
    if (click)
        screen = std::ranges::find_if(
            screens, [&](const ScreenArea& one) { return nativeGeometry(one).contains(*click); });
    if (screen == screens.end()) {
        screen = screens.begin();
        click.reset();
    }
    const QRect room = screen->available;
    QPoint wanted(room.right(), room.top());
    if (const auto at = click ? logical(*click, *screen) : QPoint(); click && isOnBar(at, screen->geometry)) {
        const bool isBelow = at.y() < screen->geometry.center().y();
        const auto inner = screen->geometry.adjusted(0, usualBar, 0, -usualBar);
        wanted = {at.x() - panel.width() / 2,
                  isBelow ? std::max(at.y() + iconRadius, inner.top())
                          : std::min(at.y() - iconRadius, inner.bottom() + 1) - panel.height()};
    }
    return {fitted(wanted.x(), room.left(), room.right() + 1, panel.width()),
            fitted(wanted.y(), room.top(), room.bottom() + 1, panel.height())};
}

} // namespace velmora
