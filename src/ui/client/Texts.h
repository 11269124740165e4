// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// What panel and dashboard say, for QML: the functions of panel and dashboard. States come as their raw
/// texts, as the model has them; one that is unknown counts as idle or nominal. Colours are names of
/// `Theme.color`.
class Texts : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// The limits to choose from: each a map of `text` and `limit`.
    Q_PROPERTY(QVariantList thresholds READ thresholds CONSTANT)
    /// The dashboard's: each a map with the members of dashboard::Page.
    Q_PROPERTY(QVariantList pages READ pages CONSTANT)
    Q_PROPERTY(QString pagePlaceholder READ pagePlaceholder CONSTANT)
    Q_PROPERTY(QString about READ about CONSTANT)
public:
    using QObject::QObject;

    /// `text` with %1 to %9 replaced. Unlike String.arg one after the other it takes values that have such
    /// placeholders themselves, as what others have written may.
    Q_INVOKABLE QString filled(QString text, const QStringList& values) const;

    Q_INVOKABLE QString percentage(double percent) const;

    Q_INVOKABLE QString chargingWord(const QString& chargingState) const;
    Q_INVOKABLE QString chargingColor(const QString& chargingState) const;

    Q_INVOKABLE QString quickChargeTitle(bool isCharging) const;
    Q_INVOKABLE QString quickChargeSymbol(bool isCharging) const;
    Q_INVOKABLE QString quickChargeTint(bool isCharging) const;

    Q_INVOKABLE QString thermalText(const QString& thermalState) const;
    Q_INVOKABLE QString thermalColor(const QString& thermalState) const;

    /// The component that shows a page of the dashboard; empty where there is no such page.
    Q_INVOKABLE QString pageView(const QString& identifier) const;

    QVariantList thresholds() const;
    QVariantList pages() const;
    QString pagePlaceholder() const;
    QString about() const;
};

} // namespace velmora
