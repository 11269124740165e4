// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "paint/SymbolProvider.h"

#include "paint/symbols/SymbolPaths.h"

#include <QLinearGradient>
#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>
#include <ranges>

namespace velmora {

namespace {

constexpr int defaultSide = 16;
constexpr int maximumSide = 1024;

QImage transparent(int side)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QByteArray document(const symbols::Layer& layer)
{
    constexpr QLatin1String form(
        "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 256 256'>"
        "<path transform='translate(%1 %2) scale(%3) translate(-128 -128)' d='%4'/></svg>");
    return QString(form).arg(layer.x).arg(layer.y).arg(layer.scale).arg(QLatin1String(layer.path)).toUtf8();
}

QImage shape(const symbols::Layer& layer, int side)
{
    auto image = transparent(side);
    QPainter painter(&image);
    QSvgRenderer(document(layer)).render(&painter, QRectF(0, 0, side, side));
    return image;
}

/// "ffrrggbb" as in the address; invalid where it is none.
QColor colour(const QString& argb)
{
    return QColor(QLatin1Char('#') + argb);
}

} // namespace

QImage symbolImage(const QString& name, int side, const QColor& from, const QColor& to)
{
    const auto symbol = std::ranges::find_if(
        symbols::table, [&](const auto& one) { return name == QLatin1String(one.name); });
    if (symbol == symbols::table.end()) return {};

    auto image = transparent(side);
    QPainter painter(&image);
    for (const auto& layer : symbol->layers) {
        if (!layer.path) break;
        painter.setCompositionMode(layer.cuts ? QPainter::CompositionMode_DestinationOut
                                              : QPainter::CompositionMode_SourceOver);
        painter.drawImage(0, 0, shape(layer, side));
    }
    QLinearGradient ink(0, 0, side, side);
    ink.setColorAt(0, from);
    ink.setColorAt(1, to);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), ink);
    return image;
}

QImage SymbolProvider::requestImage(const QString& id, QSize* size, const QSize& requested)
{
    const auto wanted = std::max(requested.width(), requested.height());
    const auto side = wanted > 0 ? std::min(wanted, maximumSide) : defaultSide;
    const auto parts = id.split(QLatin1Char('/'));
    const auto from = colour(parts.value(1));
    const auto to = colour(parts.value(2, parts.value(1)));

    auto image = from.isValid() && to.isValid() ? symbolImage(parts.first(), side, from, to) : QImage();
    if (image.isNull()) {
        qWarning("No symbol \"%s\"", qUtf8Printable(id));
        image = transparent(side);
    }
    if (size) *size = image.size();
    return image;
}

} // namespace velmora
