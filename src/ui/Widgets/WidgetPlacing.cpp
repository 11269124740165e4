// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Widgets/WidgetPlacing.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr int firstMargin = 24;

int shownArea(const QRect& widget, const ScreenArea& screen)
{
    const auto shown = widget & screen.available;
    return shown.width() * shown.height();
}

/// Of the widget's middle to the nearest point of the screen.
int distance(const QRect& widget, const ScreenArea& screen)
{
    const auto middle = widget.center();
    const auto& room = screen.available;
    const QPoint nearest(std::clamp(middle.x(), room.left(), room.right()),
                         std::clamp(middle.y(), room.top(), room.bottom()));
    return (middle - nearest).manhattanLength();
}

/// Nearest to `wanted` within the room; at its beginning where that is too small.
int fitted(int wanted, int begin, int size, int length)
{
    return std::max(begin, std::min(wanted, begin + size - length));
}

} // namespace

QPoint widgetPlace(QPoint wanted, const std::vector<ScreenArea>& screens, QSize widget)
{
    const QRect box(wanted, widget);
    const auto isBetter = [&](const ScreenArea& one, const ScreenArea& other) {
        const int more = shownArea(box, one) - shownArea(box, other);
        return more != 0 ? more > 0 : distance(box, one) < distance(box, other);
    };
    const auto& room = std::ranges::min_element(screens, isBetter)->available;
    return {fitted(wanted.x(), room.left(), room.width(), widget.width()),
            fitted(wanted.y(), room.top(), room.height(), widget.height())};
}

QPoint firstWidgetPlace(const std::vector<ScreenArea>& screens, QSize widget, int below)
{
    const auto& room = screens.front().available;
    const QPoint wanted(room.right() + 1 - firstMargin - widget.width(), room.top() + firstMargin + below);
    return widgetPlace(wanted, {screens.front()}, widget);
}

} // namespace velmora
