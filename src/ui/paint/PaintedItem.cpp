// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "paint/PaintedItem.h"

#include <QImage>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>
#include <cmath>
#include <utility>
#include <vector>

namespace velmora {

namespace {

/// Along one side, in the screen's pixels: what is painted, and what of that is stretched to the item's
/// length.
struct Side {
    int length;     ///< of the item
    int painted;    ///< less than that where the middle is stretched
    int corner = 0; ///< before the pixel that is stretched; one more is after it, for a length in between

    Side(double whole, int cornerLength) : length(static_cast<int>(std::ceil(whole))), painted(length)
    {
        const int needed = 2 * cornerLength + 2;
        if (cornerLength == 0 || length <= needed) return;
        painted = needed;
        corner = cornerLength;
    }

    struct Part {
        int from, length, paintedFrom, paintedLength;
    };
    std::vector<Part> parts() const
    {
        if (painted == length) return {{0, length, 0, length}};
        return {{0, corner, 0, corner},
                {corner, length - painted + 1, corner, 1},
                {length - corner - 1, corner + 1, corner + 1, corner + 1}};
    }
};

/// `old` where it has so many parts: to change one costs less than to replace it. The first of a new one's
/// owns the texture.
QSGNode* withParts(QSGNode* old, int count, const QQuickWindow& window)
{
    if (old && old->childCount() == count) return old;
    delete old;
    auto* made = new QSGNode;
    for (int i = 0; i < count; ++i) {
        auto* part = window.createImageNode();
        part->setOwnsTexture(i == 0);
        made->appendChildNode(part);
    }
    return made;
}

} // namespace

PaintedItem::PaintedItem(QQuickItem* parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void PaintedItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size()) update();
}

void PaintedItem::itemChange(ItemChange change, const ItemChangeData& data)
{
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged) update();
}

QSGNode* PaintedItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*)
{
    const double scale = window()->effectiveDevicePixelRatio();
    const int cornerLength = static_cast<int>(std::ceil(corner() * scale));
    const Side across(width() * scale, cornerLength);
    const Side down(height() * scale, cornerLength);
    if (across.painted <= 0 || down.painted <= 0) {
        delete old;
        return nullptr;
    }

    QImage image(across.painted, down.painted, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.scale(scale, scale);
    painter.setRenderHint(QPainter::Antialiasing);
    paint(painter, {0, 0, width() - (across.length - across.painted) / scale,
                    height() - (down.length - down.painted) / scale});
    painter.end();

    const auto columns = across.parts();
    const auto rows = down.parts();
    auto* all = withParts(old, static_cast<int>(columns.size() * rows.size()), *window());
    auto* texture = window()->createTextureFromImage(image);
    auto* next = all->firstChild();
    for (const auto& x : columns) {
        for (const auto& y : rows) {
            auto* part = static_cast<QSGImageNode*>(std::exchange(next, next->nextSibling()));
            part->setTexture(texture); // the first one's own
            part->setRect(x.from / scale, y.from / scale, x.length / scale, y.length / scale);
            part->setSourceRect(x.paintedFrom, y.paintedFrom, x.paintedLength, y.paintedLength);
        }
    }
    return all;
}

} // namespace velmora
