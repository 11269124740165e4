// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/TrendPlot.h"

#include "base/Decimal.h"
#include "history/TimeScale.h"

#include <QFontMetricsF>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace velmora {

namespace {
constexpr double gap = 6;             // between a label and the field
constexpr double loneDot = 3;         // radius of a sample that stands alone
constexpr double interruption = 7200; // seconds without a sample over which no line is drawn, at least
} // namespace

TrendPlot::TrendPlot(QQuickItem* parent) : PaintedItem(parent)
{
    setAcceptHoverEvents(true);
    connect(this, &TrendPlot::looksChanged, this, &TrendPlot::layOut);
}

void TrendPlot::setTrends(Trends* trends)
{
    if (trends_) trends_->disconnect(this);
    trends_ = trends;
    if (trends_)
        connect(trends_, &Trends::changed, this, [this] {
            findCursor();
            update();
        });
    Q_EMIT looksChanged();
}

// -- Cursor

const HSHistorySnapshot* TrendPlot::sample() const
{
    if (!trends_ || !cursor_ || *cursor_ >= trends_->window().samples.size()) return nullptr;
    return &trends_->window().samples[*cursor_];
}

void TrendPlot::setCursor(std::optional<std::size_t> index)
{
    const bool isOther = std::exchange(cursor_, index) != index;
    if (const auto* at = sample()) cursorDate_ = at->timestamp;
    if (isOther) Q_EMIT cursorChanged();
}

/// The sample under the cursor may have another index now, or be gone.
void TrendPlot::findCursor()
{
    const auto& samples = trends_->window().samples;
    const auto found = std::ranges::find(samples, cursorDate_, &HSHistorySnapshot::timestamp);
    const bool isLost = !cursor_ || found == samples.end();
    cursor_ = isLost ? std::nullopt : std::optional(static_cast<std::size_t>(found - samples.begin()));
    Q_EMIT cursorChanged();
}

QPointF TrendPlot::cursor() const
{
    const auto* at = sample();
    return at ? QPointF(xOf(at->timestamp), yOf(value(*at))) : QPointF();
}

QString TrendPlot::readOut() const
{
    const auto* at = sample();
    return at ? trends_->readOut(*at) : QString();
}

void TrendPlot::hoverMoveEvent(QHoverEvent* event)
{
    const bool isAtRest = event->position() == event->oldPosF(); // repeated with every frame
    if (!trends_ || (isAtRest && hasActiveFocus())) return;      // the keys have it now
    const auto& window = trends_->window();
    const auto& box = field_;
    const double part = (event->position().x() - box.left()) / std::max(1.0, box.width());
    setCursor(trends::nearest(window.samples, window.from + part * (window.to - window.from)));
}

void TrendPlot::hoverEnterEvent(QHoverEvent* event)
{
    hoverMoveEvent(event);
}

void TrendPlot::hoverLeaveEvent(QHoverEvent*)
{
    if (!hasActiveFocus()) setCursor(std::nullopt);
}

void TrendPlot::keyPressEvent(QKeyEvent* event)
{
    const auto count = trends_ ? trends_->window().samples.size() : 0;
    const auto last = count - 1;
    const auto key = event->key();
    const bool isOurs =
        key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Home || key == Qt::Key_End;
    event->setAccepted(isOurs && count > 0);
    if (!event->isAccepted()) return;
    const auto at = std::min(cursor_.value_or(last), last);
    if (key == Qt::Key_Home)
        setCursor(0);
    else if (key == Qt::Key_End || !cursor_)
        setCursor(last);
    else if (key == Qt::Key_Left)
        setCursor(at == 0 ? 0 : at - 1);
    else
        setCursor(std::min(at + 1, last));
}

void TrendPlot::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    PaintedItem::geometryChange(newGeometry, oldGeometry);
    layOut();
}

// -- Places

void TrendPlot::layOut()
{
    const QFontMetricsF metrics(font_);
    const double left = std::ceil(metrics.horizontalAdvance(QStringLiteral("100.0%"))) + gap;
    const double bottom = std::ceil(metrics.height()) + gap;
    field_ = {left, std::ceil(metrics.height() / 2), std::max(1.0, width() - left - 1),
              std::max(1.0, height() - bottom - metrics.height() / 2)};
    update();
    Q_EMIT cursorChanged();
}

double TrendPlot::xOf(Date date) const
{
    const auto& window = trends_->window();
    const auto& box = field_;
    return box.left() + (date - window.from) / (window.to - window.from) * box.width();
}

double TrendPlot::yOf(double value) const
{
    const auto [lowest, highest, step] = scale();
    const auto& box = field_;
    return box.bottom() - (value - lowest) / (highest - lowest) * box.height();
}

// -- Painting

void TrendPlot::paint(QPainter& painter, const QRectF&)
{
    if (!trends_ || trends_->isEmpty()) return;
    painter.setFont(font_);
    if (isThermal_) paintBands(painter);
    paintScales(painter);
    painter.setClipRect(field_.adjusted(-loneDot, -loneDot, loneDot, loneDot));
    paintCurve(painter);
    if (!isThermal_) paintFit(painter);
}

void TrendPlot::paintScales(QPainter& painter) const
{
    const auto& box = field_;
    const QFontMetricsF metrics(font_);
    const auto [lowest, highest, step] = scale();
    for (int i = 0; lowest + i * step <= highest + step / 2; ++i) {
        const double y = std::round(yOf(lowest + i * step)) + 0.5;
        painter.setPen(QPen(gridInk_, 1));
        painter.drawLine(QPointF(box.left(), y), QPointF(box.right(), y));
        const auto label = QString::fromStdString(decimalText(lowest + i * step, step < 1 ? 1 : 0)) + "%";
        painter.setPen(textInk_);
        painter.drawText(QRectF(0, y - metrics.height() / 2, box.left() - gap, metrics.height()),
                         Qt::AlignRight | Qt::AlignVCenter, label);
    }
    const double widest = metrics.horizontalAdvance(QStringLiteral("00 MMM 0000"));
    const auto& window = trends_->window();
    for (const auto& [date, label] : timeMarks(window.from, window.to, int(box.width() / widest))) {
        const double x = xOf(date);
        const double start =
            std::clamp(x - widest / 2, box.left(), std::max(box.left(), box.right() - widest));
        const auto side = x - widest / 2 < box.left()    ? Qt::AlignLeft
                          : x + widest / 2 > box.right() ? Qt::AlignRight
                                                         : Qt::AlignHCenter;
        painter.drawText(QRectF(start, box.bottom() + gap, widest, metrics.height()),
                         int(side | Qt::AlignTop), label);
    }
}

void TrendPlot::paintBands(QPainter& painter) const
{
    const auto& box = field_;
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (const auto& [from, to, state] : trends_->bands()) {
        const double left = std::floor(xOf(from));
        const auto ink = bandInks_.value(static_cast<int>(state)).value<QColor>();
        painter.fillRect(QRectF(left, box.top(), std::max(1.0, std::ceil(xOf(to)) - left), box.height()),
                         ink);
    }
    painter.setRenderHint(QPainter::Antialiasing);
}

void TrendPlot::paintCurve(QPainter& painter) const
{
    const auto& [from, to, samples] = trends_->window();
    const double longest = std::max(interruption, (to - from) / 60);
    const auto& box = field_;
    QLinearGradient shade(box.topLeft(), box.bottomLeft());
    shade.setColorAt(0, QColor(ink_.red(), ink_.green(), ink_.blue(), isThermal_ ? 0 : 60));
    shade.setColorAt(1, QColor(ink_.red(), ink_.green(), ink_.blue(), 0));
    for (auto begin = samples.begin(); begin != samples.end();) {
        auto end = begin + 1;
        while (end != samples.end() && end->timestamp - (end - 1)->timestamp <= longest) ++end;
        QPolygonF line;
        for (auto one = begin; one != end; ++one) line << QPointF(xOf(one->timestamp), yOf(value(*one)));
        auto area = line;
        area << QPointF(line.last().x(), box.bottom()) << QPointF(line.first().x(), box.bottom());
        painter.setPen(Qt::NoPen);
        painter.setBrush(shade);
        painter.drawPolygon(area);
        painter.setPen(QPen(ink_, 1.75, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        if (line.size() > 1) {
            painter.drawPolyline(line);
        } else { // a single sample
            painter.setPen(QPen(ink_, 2 * loneDot, Qt::SolidLine, Qt::RoundCap));
            painter.drawPoint(line.first());
        }
        begin = end;
    }
}

void TrendPlot::paintFit(QPainter& painter) const
{
    const auto& window = trends_->window();
    const auto across = [&](const QColor& ink, double before, double after) {
        painter.setPen(QPen(ink, 1.5, Qt::DashLine));
        painter.drawLine(QPointF(xOf(window.from), before), QPointF(xOf(window.to), after));
    };
    constexpr double worn = PredictionEngine::endOfLifeHealth;
    across(wornInk_, yOf(worn), yOf(worn)); // far below the field while the battery is young
    if (const auto& fit = trends_->fit()) across(fitInk_, yOf(fit->at(window.from)), yOf(fit->at(window.to)));
}

} // namespace velmora
