// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "theme/Fonts.h"

#include <QFontDatabase>
#include <QGuiApplication>

namespace velmora {

namespace {

/// The family of the file of this weight, as the font itself calls it; empty where it did not load.
QString load(int weight)
{
    const auto file = QStringLiteral(":/fonts/nunito-latin-%1-normal.woff2").arg(weight);
    const auto families = QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(file));
    if (families.isEmpty()) qWarning("No font in %s", qUtf8Printable(file));
    return families.value(0);
}

} // namespace

Fonts::Fonts(QObject* parent) : QObject(parent), rounded_(QGuiApplication::font().family())
{
    static const auto family = [] { // the database is the process's, and outlives every engine
        load(QFont::DemiBold);
        load(QFont::Bold);
        return load(QFont::Normal);
    }();
    if (!family.isEmpty()) rounded_ = family;
}

} // namespace velmora
