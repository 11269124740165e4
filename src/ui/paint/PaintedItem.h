// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

class QPainter;

namespace velmora {

/// An item that is painted into a picture, which is kept until `update`. Qt's own painted item keeps two in
/// the software renderer, both as large as the item. Derived classes name it in full, or qmllint does not
/// know it.
class PaintedItem : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS
public:
    explicit PaintedItem(QQuickItem* parent = nullptr);

protected:
    /// Paints what fills `box`, which is as large as the item, or smaller where it has a `corner`.
    virtual void paint(QPainter& painter, const QRectF& box) = 0;

    /// How far into the item its corners reach, beyond which it goes on unchanged to the opposite ones: that
    /// is not kept. Nothing for an item that must be kept whole.
    virtual int corner() const { return 0; }

    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;
};

} // namespace velmora
