// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// Shows what the windows are made of, light and dark beside each other.

#include "Gallery.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>
#include <array>
#include <cstdio>
#include <exception>

int main(int argc, char** argv)
try {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication application(argc, argv);
    if (argc > 1) {
        std::fputs("usage: velmora-gallery\nShows every component of the windows, light and dark.\n", stderr);
        return 2;
    }
    std::array<QQmlEngine, 2> engines; // each has an appearance of its own
    std::array<std::unique_ptr<QQuickWindow>, 2> windows;
    const auto place = QGuiApplication::primaryScreen()->availableGeometry();
    for (std::size_t i = 0; i < windows.size(); ++i) {
        qputenv("VELMORA_APPEARANCE", i == 0 ? "light" : "dark");
        windows[i] = velmora::makeGallery(engines[i], true);
        windows[i]->setHeight(place.height());
        windows[i]->setPosition(place.topLeft() + QPoint(static_cast<int>(i) * place.width() / 2, 0));
        windows[i]->show();
    }
    return QGuiApplication::exec();
} catch (const std::exception& failure) {
    std::fprintf(stderr, "velmora-gallery: %s\n", failure.what());
    return 1;
}
