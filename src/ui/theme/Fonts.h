// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// The typeface that the program carries with it, so that it looks the same on every desktop.
class Fonts : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString rounded MEMBER rounded_ CONSTANT)
public:
    explicit Fonts(QObject* parent = nullptr);

private:
    QString rounded_; ///< family with regular, semibold and bold; the desktop's where it did not load
};

} // namespace velmora
