// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Gallery.h"

#include "paint/symbols/SymbolPaths.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QStringList>
#include <stdexcept>

void qml_register_types_Velmora(); // both keep the linker from leaving them out
void qml_register_types_VelmoraGallery();

namespace velmora {

std::unique_ptr<QQuickWindow> makeGallery(QQmlEngine& engine, bool isAnimated)
{
    qml_register_types_Velmora();
    qml_register_types_VelmoraGallery();
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    QStringList names;
    for (const auto& symbol : symbols::table) names << symbol.name;
    QQmlComponent component(&engine, QUrl(QStringLiteral("qrc:/qt/qml/VelmoraGallery/GalleryWindow.qml")));
    std::unique_ptr<QObject> made(
        component.createWithInitialProperties({{"symbols", names}, {"isAnimated", isAnimated}}));
    auto* window = qobject_cast<QQuickWindow*>(made.get());
    if (!window) throw std::runtime_error(component.errorString().toStdString());
    (void)made.release();
    return std::unique_ptr<QQuickWindow>(window);
}

} // namespace velmora
