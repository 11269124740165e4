// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/PanelPlace.h"

#include <algorithm>
#include <array>

namespace velmora {

namespace {

constexpr int margin = 4;      // to what bars leave
constexpr int barGap = 8;      // to a bar that floats a little above what it claims
constexpr int iconRadius = 12; // a click is somewhere on the icon
constexpr int largestIcon = 32;
constexpr int barDepth = 64; // how far from the screen's edge a tray icon can be
constexpr int usualBar = 32; // depth assumed where the work area is unknown, as without a window manager
constexpr std::array scales{1.0, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};

/// What is known of the icon that was clicked.
struct Icon {
    const ScreenArea& screen;
    std::optional<QPoint> at; ///< in the pixels that windows are measured in
};

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
    return !screen.adjusted(barDepth, barDepth, -barDepth, -barDepth).contains(click);
}

Icon iconAt(std::optional<QPoint> click, const std::vector<ScreenArea>& screens)
{
    // Some hosts do not know the place and send the corner; some count from the corner of the icon.
    if (click && !QRect(0, 0, largestIcon, largestIcon).contains(*click)) {
        // Where the desktop is scaled and XWayland is not, the click may be off every screen by that scale.
        for (const double scale : scales) {
            const auto isThere = [at = *click / scale](const auto& one) {
                return nativeGeometry(one).contains(at);
            };
            const auto screen = std::ranges::find_if(screens, isThere);
            if (screen == screens.end()) continue;
            const auto at = logical(*click / scale, *screen);
            return {*screen, isOnBar(at, screen->geometry) ? std::optional(at) : std::nullopt};
        }
    }
    return {screens.front(), std::nullopt};
}

/// Nearest to `wanted` within the room; at its beginning where that is too small.
int fitted(int wanted, int begin, int end, int length)
{
    return std::max(begin + margin, std::min(wanted, end - margin - length));
}

QPoint corner(const ScreenArea& screen)
{
    const bool isBarBelow = screen.available.top() == screen.geometry.top() &&
                            screen.available.bottom() < screen.geometry.bottom();
    return isBarBelow ? screen.available.bottomRight() : screen.available.topRight();
}

/// Of the bar; in a corner, one along the top or the bottom is likelier.
Qt::Edge edgeAt(QPoint at, const QRect& screen)
{
    if (at.y() - screen.top() < barDepth) return Qt::TopEdge;
    if (screen.bottom() - at.y() < barDepth) return Qt::BottomEdge;
    return at.x() < screen.center().x() ? Qt::LeftEdge : Qt::RightEdge;
}

} // namespace

QPoint panelPlace(std::optional<QPoint> click, const std::vector<ScreenArea>& screens, QSize panel)
{
    const auto& [screen, at] = iconAt(click, screens);
    QPoint wanted = corner(screen);
    if (at) {
        const bool isBelow = at->y() < screen.geometry.center().y();
        const auto inner = screen.geometry.adjusted(0, usualBar, 0, -usualBar);
        wanted = {at->x() - panel.width() / 2,
                  isBelow ? std::max(at->y() + iconRadius, inner.top())
                          : std::min(at->y() - iconRadius, inner.bottom() + 1) - panel.height()};
    }
    const auto& room = screen.available;
    return {fitted(wanted.x(), room.left(), room.right() + 1, panel.width()),
            fitted(wanted.y(), room.top(), room.bottom() + 1, panel.height())};
}

PanelLayer panelLayer(std::optional<QPoint> click, std::vector<ScreenArea> screens, QSize panel)
{
    // Qt rounds a screen's scale up here, and hosts differ in whether they count by it.
    for (auto& screen : screens) screen.scale = 1;
    const auto& [screen, at] = iconAt(click, screens);
    const auto index = static_cast<std::size_t>(&screen - screens.data());
    const auto edge = at ? edgeAt(*at, screen.geometry) : Qt::TopEdge;
    if (!at) return {index, {edge | Qt::RightEdge, {margin, barGap, margin, barGap}}};
    const auto along = *at - screen.geometry.topLeft() - QPoint(panel.width(), panel.height()) / 2;
    QMargins margins(barGap, barGap, barGap, barGap);
    if (edge == Qt::TopEdge || edge == Qt::BottomEdge) {
        margins.setLeft(fitted(along.x(), 0, screen.geometry.width(), panel.width()));
        return {index, {edge | Qt::LeftEdge, margins}};
    }
    margins.setTop(fitted(along.y(), 0, screen.geometry.height(), panel.height()));
    return {index, {edge | Qt::TopEdge, margins}};
}

} // namespace velmora
