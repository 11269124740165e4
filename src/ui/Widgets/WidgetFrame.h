// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteWidget.h"

#include <QObject>
#include <QPoint>
#include <QQmlParserStatus>
#include <QQuickWindow>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace velmora {

/// Keeps a widget's window where its owner put it: brings it back to that place, moves it by pointer and
/// keys, and remembers where it came to rest. Where screens come and go, or it grows, it is moved into what
/// is there, and the place is not forgotten for that. On Wayland a window does not know its place, nor can it
/// choose one: there the compositor places it, and nothing is remembered.
class WidgetFrame : public QObject, public QQmlParserStatus {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(QQuickWindow* window MEMBER window_ REQUIRED)
    Q_PROPERTY(velmora::RemoteWidget* settings MEMBER settings_ REQUIRED)
    /// So far below the top of the screen it stands while it has not been moved.
    Q_PROPERTY(int firstTop MEMBER firstTop_)
public:
    explicit WidgetFrame(QObject* parent = nullptr);

    /// The pointer has taken hold of it: from now on it goes with it. Where the window manager sees to that,
    /// the item that was pressed is told that the press is cancelled.
    Q_INVOKABLE void beginDrag();
    /// The pointer has moved.
    Q_INVOKABLE void drag();
    /// By so many pixels, as long as it stays on a screen.
    Q_INVOKABLE void nudge(int right, int down);

    void classBegin() override {}
    void componentComplete() override;

private:
    void takeSettings();
    void place();
    void moved();
    void roomChanged();
    void watch(QScreen* screen);
    void rest();

    QQuickWindow* window_ = nullptr;
    RemoteWidget* settings_ = nullptr;
    int firstTop_ = 0;
    bool isPlaced_ = false;   ///< the remembered place was known
    bool movedByUser_ = true; ///< its owner moves it, not a change of the screens or of its size
    QPoint restPosition_;     ///< where it is at rest, as far as that is no news
    QPoint dragOffset_;       ///< of the pointer, from the window's corner
    QTimer resting_;
};

} // namespace velmora
