// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "paint/PaintedItem.h"

#include <QColor>
#include <QPainterPath>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// A rectangle whose corners bend gradually instead of starting at once on a circle, with an edge that may be
/// thinner than a pixel and a soft shadow below. The shadow is painted inside the item: leave room for it by
/// `inset`.
class ContinuousRectangle : public velmora::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY looksChanged)
    Q_PROPERTY(qreal radius MEMBER radius_ NOTIFY looksChanged)
    Q_PROPERTY(QColor edgeColor MEMBER edgeColor_ NOTIFY looksChanged)
    Q_PROPERTY(qreal edgeWidth MEMBER edgeWidth_ NOTIFY looksChanged)
    Q_PROPERTY(QColor shadowColor MEMBER shadowColor_ NOTIFY looksChanged)
    Q_PROPERTY(qreal shadowOffset MEMBER shadowOffset_ NOTIFY looksChanged)
    Q_PROPERTY(qreal shadowRadius MEMBER shadowRadius_ NOTIFY looksChanged)
    Q_PROPERTY(qreal inset MEMBER inset_ NOTIFY looksChanged)
public:
    explicit ContinuousRectangle(QQuickItem* parent = nullptr);

signals:
    void looksChanged();

protected:
    void paint(QPainter& painter, const QRectF& box) override;
    int corner() const override;

private:
    void paintShadow(QPainter& painter, const QRectF& body) const;

    QColor color_ = Qt::transparent;
    qreal radius_ = 0;
    QColor edgeColor_ = Qt::transparent;
    qreal edgeWidth_ = 0;
    QColor shadowColor_ = Qt::transparent;
    qreal shadowOffset_ = 0;
    qreal shadowRadius_ = 0;
    qreal inset_ = 0;
};

/// The outline: `box` with corners that look as round as circles of `radius`, or rounder where the box is
/// small.
[[nodiscard]] QPainterPath continuousRectangle(const QRectF& box, qreal radius);

} // namespace velmora
