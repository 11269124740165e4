// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QQmlParserStatus>
#include <QWindow>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// Asks the window manager for a dark or a light frame around a window, where it asks windows: GNOME's before
/// version 44 does, on X11. Elsewhere the desktop's look alone decides.
class WindowFrame : public QObject, public QQmlParserStatus {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(QWindow* window MEMBER window_ REQUIRED)
    Q_PROPERTY(bool dark MEMBER isDark_ NOTIFY darkChanged REQUIRED)
public:
    explicit WindowFrame(QObject* parent = nullptr);

    void classBegin() override {}
    void componentComplete() override { ask(); }

Q_SIGNALS:
    void darkChanged();

private:
    void ask();

    QWindow* window_ = nullptr;
    bool isDark_ = false;
};

} // namespace velmora
