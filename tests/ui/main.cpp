// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "program/CoreTranslator.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <gtest/gtest.h>

/// All windows of the tests are drawn in memory, and whoever runs them lends them neither a desktop nor its
/// wishes, type or time zone.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    qputenv("FONTCONFIG_FILE", VELMORA_UI_TESTS "/fonts.conf");
    qputenv("TZ", "UTC");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    testing::InitGoogleTest(&argc, argv);
    const QGuiApplication application(argc, argv);
    velmora::CoreTranslator translator;
    QGuiApplication::installTranslator(&translator);
    return RUN_ALL_TESTS();
}
