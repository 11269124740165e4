// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "history/Trends.h"
#include "paint/PaintedItem.h"

#include <QColor>
#include <QFont>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// A curve over time with scales: of health with the line fitted through it, or of the level above bands of
/// thermal states. Under the pointer, or moved by the arrow keys, is a cursor on the nearest sample; it is
/// not painted here, so that it moves without the curve being painted again.
class TrendPlot : public velmora::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(velmora::Trends* trends READ trends WRITE setTrends NOTIFY looksChanged)
    Q_PROPERTY(bool thermal MEMBER isThermal_ NOTIFY looksChanged)
    Q_PROPERTY(QColor ink MEMBER ink_ NOTIFY looksChanged)
    Q_PROPERTY(QColor fitInk MEMBER fitInk_ NOTIFY looksChanged)
    Q_PROPERTY(QColor wornInk MEMBER wornInk_ NOTIFY looksChanged) ///< at the health of a worn battery
    Q_PROPERTY(QColor gridInk MEMBER gridInk_ NOTIFY looksChanged)
    Q_PROPERTY(QColor textInk MEMBER textInk_ NOTIFY looksChanged)
    Q_PROPERTY(QVariantList bandInks MEMBER bandInks_ NOTIFY looksChanged) ///< nominal to critical
    Q_PROPERTY(QFont font MEMBER font_ NOTIFY looksChanged)
    Q_PROPERTY(bool hasCursor READ hasCursor NOTIFY cursorChanged)
    Q_PROPERTY(QPointF cursor READ cursor NOTIFY cursorChanged)
    Q_PROPERTY(QString readOut READ readOut NOTIFY cursorChanged)
    Q_PROPERTY(QRectF field MEMBER field_ NOTIFY cursorChanged) ///< the plot within its scales
public:
    explicit TrendPlot(QQuickItem* parent = nullptr);

    Trends* trends() const { return trends_; }
    void setTrends(Trends* trends);

    bool hasCursor() const { return sample() != nullptr; }
    QPointF cursor() const;
    QString readOut() const;

Q_SIGNALS:
    void looksChanged();
    void cursorChanged();

protected:
    void paint(QPainter& painter, const QRectF& box) override;
    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    void setCursor(std::optional<std::size_t> index);
    void findCursor();
    const HSHistorySnapshot* sample() const;

    void layOut();
    trends::Scale scale() const { return isThermal_ ? trends::levelScale : trends_->healthScale(); }
    double xOf(Date date) const;
    double yOf(double value) const;
    double value(const HSHistorySnapshot& sample) const
    {
        return isThermal_ ? sample.percentage : sample.health;
    }

    void paintScales(QPainter& painter) const;
    void paintBands(QPainter& painter) const;
    void paintCurve(QPainter& painter) const;
    void paintFit(QPainter& painter) const;

    QPointer<Trends> trends_;
    bool isThermal_ = false;
    QColor ink_, fitInk_, wornInk_, gridInk_, textInk_;
    QVariantList bandInks_;
    QFont font_;
    QRectF field_; ///< within the scales
    std::optional<std::size_t> cursor_;
    Date cursorDate_{}; ///< of the sample that it was last on
};

} // namespace velmora
