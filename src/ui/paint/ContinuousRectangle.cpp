// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "paint/ContinuousRectangle.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace velmora {

namespace {

// A corner is a quarter of |x|³ + |y|³ = 1: no curvature where it meets the sides. With this reach it leaves
// as much of the corner empty as the circle does.
constexpr double exponent = 3;
constexpr double reachPerRadius = 1.42;
constexpr int stepsPerCorner = 16;

/// From the end of one side to the begin of the next; `along` and `inward` are the axes at the box's corner.
void addCorner(QPainterPath& path, QPointF corner, QPointF along, QPointF inward)
{
    for (int step = 0; step <= stepsPerCorner; ++step) {
        const auto angle = std::numbers::pi / 2 * step / stepsPerCorner;
        const auto back = 1 - std::pow(std::sin(angle), 2 / exponent);
        const auto down = 1 - std::pow(std::cos(angle), 2 / exponent);
        const auto point = corner - along * back + inward * down;
        path.elementCount() == 0 ? path.moveTo(point) : path.lineTo(point);
    }
}

} // namespace

QPainterPath continuousRectangle(const QRectF& box, qreal radius)
{
    QPainterPath path;
    const auto half = std::min(box.width(), box.height()) / 2;
    if (radius <= 0 || radius >= half) { // round ends: nothing straight is left to join
        const auto round = std::clamp(radius, 0.0, std::max(half, 0.0));
        path.addRoundedRect(box, round, round);
        return path;
    }
    const auto reach = std::min(radius * reachPerRadius, half);
    const QPointF right(reach, 0);
    const QPointF down(0, reach);
    addCorner(path, box.topRight(), right, down);
    addCorner(path, box.bottomRight(), down, -right);
    addCorner(path, box.bottomLeft(), -right, -down);
    addCorner(path, box.topLeft(), -down, right);
    path.closeSubpath();
    return path;
}

ContinuousRectangle::ContinuousRectangle(QQuickItem* parent) : PaintedItem(parent)
{
    connect(this, &ContinuousRectangle::looksChanged, this, [this] { update(); });
}

void ContinuousRectangle::paint(QPainter& painter, const QRectF& box)
{
    const auto body = box.adjusted(inset_, inset_, -inset_, -inset_);
    if (body.isEmpty()) return;
    if (shadowColor_.alpha() > 0) paintShadow(painter, body);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color_);
    painter.drawPath(continuousRectangle(body, radius_));
    if (edgeWidth_ <= 0) return;
    // Filled, between two outlines: of a pen this thin Qt paints a quarter too little, and some of it
    // outside.
    auto edge = continuousRectangle(body, radius_);
    edge.addPath(continuousRectangle(body.adjusted(edgeWidth_, edgeWidth_, -edgeWidth_, -edgeWidth_),
                                     radius_ - edgeWidth_));
    painter.setBrush(edgeColor_);
    painter.drawPath(edge);
}

int ContinuousRectangle::corner() const
{
    const auto shadow = shadowColor_.alpha() > 0 ? shadowRadius_ / 2 + std::abs(shadowOffset_) : 0;
    return static_cast<int>(std::ceil(inset_ + radius_ * reachPerRadius + edgeWidth_ + shadow));
}

/// Rings laid over each other, the widest first: each adds its part of the colour.
void ContinuousRectangle::paintShadow(QPainter& painter, const QRectF& body) const
{
    const auto rings = std::clamp(static_cast<int>(std::ceil(shadowRadius_)), 1, 24);
    auto ink = shadowColor_;
    ink.setAlphaF(static_cast<float>(1 - std::pow(1 - shadowColor_.alphaF(), 1.0 / rings)));
    QPainterPath shadow;
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    for (int ring = 0; ring < rings; ++ring) {
        const auto spread = shadowRadius_ / 2 - shadowRadius_ * ring / rings;
        const auto box = body.adjusted(-spread, -spread, spread, spread).translated(0, shadowOffset_);
        if (box.isValid())
            painter.drawPath(continuousRectangle(box, radius_ + spread) - continuousRectangle(body, radius_));
    }
}

} // namespace velmora
