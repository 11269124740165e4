// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "paint/Symbols.h"

#include "paint/SymbolProvider.h"

#include <QQmlEngine>

namespace velmora {

Symbols::Symbols(QQmlEngine& engine)
{
    engine.addImageProvider(QStringLiteral("symbol"), new SymbolProvider);
}

QUrl Symbols::url(const QString& name, const QColor& from, const QColor& to) const
{
    const auto argb = [](const QColor& one) { return one.name(QColor::HexArgb).mid(1); };
    auto path = QStringLiteral("image://symbol/%1/%2").arg(name, argb(from));
    if (to != from) path += QLatin1Char('/') + argb(to);
    return QUrl(path);
}

} // namespace velmora
