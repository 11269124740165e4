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

/// Keeps a widget's window where the user put it: restores that position, moves it by pointer and keys, and
/// saves the position once it has come to rest. When screens change or it grows, it is moved into what is
/// visible, and the saved position stays. On Wayland without layer-shell the compositor places the window,
/// which does not learn its position: nothing is saved there.
class WidgetFrame : public QObject, public QQmlParserStatus {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(QQuickWindow* window MEMBER window_ REQUIRED)
    Q_PROPERTY(velmora::RemoteWidget* settings MEMBER settings_ REQUIRED)
    /// Pixels from the top of the screen while it has not been moved.
    Q_PROPERTY(int firstTop MEMBER firstTop_)
    /// The window is one that no window manager moves.
    Q_PROPERTY(bool isUnmanaged READ isUnmanaged CONSTANT)
public:
    explicit WidgetFrame(QObject* parent = nullptr);

    static bool isUnmanaged();

    /// A drag begins. Where the window manager moves the window, the press of the item is cancelled.
    Q_INVOKABLE void beginDrag();
    /// The pointer has moved.
    Q_INVOKABLE void drag();
    /// The pointer has let go. A layer surface moves only now.
    Q_INVOKABLE void endDrag();
    /// Moves it by so many pixels, as long as it stays on a screen.
    Q_INVOKABLE void nudge(int right, int down);

    void classBegin() override {}
    void componentComplete() override;

Q_SIGNALS:
    /// Something is to be drawn anew: a layer surface moves with its next frame.
    void frameWanted();

private:
    void takeSettings();
    void followPin();
    void place();
    QPoint position() const;
    void moveTo(QPoint position);
    void moved();
    void roomChanged();
    void watch(QScreen* screen);
    void rest();

    QQuickWindow* window_ = nullptr;
    RemoteWidget* settings_ = nullptr;
    int firstTop_ = 0;
    bool isPlaced_ = false;   ///< the saved position is known
    bool movedByUser_ = true; ///< the user moves it, not a change of the screens or of its size
    QPoint restPosition_;     ///< where it came to rest last, as saved
    QPoint dragOffset_;       ///< of the pointer, from the window's corner
    QPoint layerPosition_;    ///< of a layer surface, which Qt does not know
    QTimer resting_;
};

} // namespace velmora
