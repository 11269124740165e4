// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Identity.h"

#include "wire/ModelFace.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace velmora {

namespace {

QPixmap drawn(QSvgRenderer& picture, int size)
{
    QPixmap pixels(size, size);
    pixels.fill(Qt::transparent);
    QPainter painter(&pixels);
    picture.render(&painter);
    return pixels;
}

} // namespace

void identifyWindows()
{
    QGuiApplication::setDesktopFileName(QString::fromLatin1(wire::face::serviceName));
    if (QGuiApplication::platformName() != QLatin1String("xcb")) return;
    QSvgRenderer picture(QStringLiteral(":/app.velmora.Velmora.svg"));
    QIcon icon;
    for (const int size : {16, 32, 48, 64, 128}) icon.addPixmap(drawn(picture, size));
    QGuiApplication::setWindowIcon(icon);
}

} // namespace velmora
