// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteWidget.h"

#include "model/WidgetSettings.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr auto placeName = "place";

} // namespace

std::optional<QPoint> RemoteWidget::place() const
{
    const auto isPossible = [](int coordinate) {
        return coordinate >= WidgetPlace::lowest && coordinate <= WidgetPlace::highest;
    };
    const auto place = value(placeName).value<QList<int>>();
    if (place.size() != 2 || !std::ranges::all_of(place, isPossible)) return std::nullopt;
    return QPoint(place[0], place[1]);
}

void RemoteWidget::keepPlace(QPoint place)
{
    const auto kept = QVariant::fromValue(QList<int>{place.x(), place.y()});
    keep(placeName, kept);
    set(QString::fromLatin1(placeName), kept);
}

} // namespace velmora
