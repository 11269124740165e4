// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QColor>
#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

class QQmlEngine;
class QJSEngine;

namespace velmora {

/// Where `SymbolImage` gets its pictures. Its first use in an engine brings the provider along.
class Symbols : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
public:
    explicit Symbols(QQmlEngine& engine);
    static Symbols* create(QQmlEngine* engine, QJSEngine*) { return new Symbols(*engine); }

    Q_INVOKABLE QUrl url(const QString& name, const QColor& from, const QColor& to) const;
};

} // namespace velmora
