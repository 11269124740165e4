// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "paint/Arc.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPen>

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {
constexpr double degree = 16; // what Qt counts in, anticlockwise from three o'clock
} // namespace

Arc::Arc(QQuickItem* parent) : PaintedItem(parent)
{
    connect(this, &Arc::looksChanged, this, [this] { update(); });
}

void Arc::paint(QPainter& painter, const QRectF& box)
{
    if (!(value_ > 0) || !std::isfinite(start_)) return; // nor for what is no number
    QLinearGradient ink(box.topLeft(), box.bottomRight());
    ink.setColorAt(0, from_);
    ink.setColorAt(1, to_.isValid() ? to_ : from_);
    painter.setPen(QPen(ink, lineWidth_, Qt::SolidLine, Qt::RoundCap));
    const auto half = lineWidth_ / 2;
    const auto begin = 90 - std::fmod(start_, 360);
    const auto span = -360 * std::min(value_, 1.0);
    painter.drawArc(box.adjusted(half, half, -half, -half), qRound(begin * degree), qRound(span * degree));
}

} // namespace velmora
