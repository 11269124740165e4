// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteWidget.h"

#include "model/WidgetSettings.h"

#include <QDBusArgument>
#include <algorithm>

namespace velmora {

namespace {

const auto placeName = QStringLiteral("place");

/// A list of integers as a bus hands it over becomes one of Qt's; anything else stays what it is.
QVariant plain(const QVariant& value)
{
    if (value.metaType() != QMetaType::fromType<QDBusArgument>()) return value;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("ai")) return value;
    return QVariant::fromValue(qdbus_cast<QList<int>>(argument));
}

} // namespace

void RemoteWidget::apply(const QVariantMap& values)
{
    take(values, "isPinned", isPinned_);
    take(values, "isShownAtLogIn", isShownAtLogIn_);
    if (values.contains(placeName)) take({{placeName, plain(values[placeName])}}, "place", place_);
    isKnown_ = true;
    Q_EMIT changed();
}

std::optional<QPoint> RemoteWidget::place() const
{
    const auto isPossible = [](int value) {
        return value >= WidgetPlace::lowest && value <= WidgetPlace::highest;
    };
    if (place_.size() != 2 || !std::ranges::all_of(place_, isPossible)) return std::nullopt;
    return QPoint(place_[0], place_[1]);
}

void RemoteWidget::keepPlace(QPoint place)
{
    place_ = {place.x(), place.y()};
    set(placeName, QVariant::fromValue(place_));
}

} // namespace velmora
