// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "paint/PaintedItem.h"

#include <QColor>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// A part of the circle that the item's box holds, clockwise from the top or from `start`
/// degrees after it, with round ends. Its ink runs from
/// the box's top left corner to its bottom right one.
class Arc : public velmora::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qreal value MEMBER value_ NOTIFY looksChanged) ///< 0 nothing to 1 all; beyond counts as these
    Q_PROPERTY(qreal start MEMBER start_ NOTIFY looksChanged)
    Q_PROPERTY(QColor from MEMBER from_ NOTIFY looksChanged)
    Q_PROPERTY(QColor to MEMBER to_ NOTIFY looksChanged) ///< as `from` unless set
    Q_PROPERTY(qreal lineWidth MEMBER lineWidth_ NOTIFY looksChanged)
public:
    explicit Arc(QQuickItem* parent = nullptr);

signals:
    void looksChanged();

protected:
    void paint(QPainter& painter, const QRectF& box) override;

private:
    qreal value_ = 0;
    qreal start_ = 0;
    QColor from_;
    QColor to_;
    qreal lineWidth_ = 5;
};

} // namespace velmora
