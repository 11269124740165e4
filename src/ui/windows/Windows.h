// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/QtLog.h"
#include "client/RemoteModel.h"

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QPoint>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>

class QQmlEngine;
class QQuickWindow;

namespace velmora {

/// The windows that this program can show, by the names of wire::windows; each at most once.
class Windows : public QObject {
    Q_OBJECT
public:
    /// Longest time of a click from the tray icon to here, through tray host and application.
    static constexpr std::chrono::milliseconds usualClickTravel{250};

    /// Windows are made at once when requested, and shown from `release` on. Engine and model must outlive
    /// this.
    Windows(QQmlEngine& engine, RemoteModel& model, std::chrono::milliseconds clickTravel = usualClickTravel);
    ~Windows() override;

    static bool isKnown(const QString& name);

    /// Opens the window or brings it to the front. False where it could not be made; the log says why.
    bool show(const QString& name);
    /// Opens the window and leaves the focus where it is (on Wayland the compositor decides); one that is
    /// open stays as it is.
    bool showInactive(const QString& name);
    /// Handles a click on the tray icon at this place of the display: the window opens there, or closes.
    /// A click that has just closed it by taking the focus away does not open it again.
    bool toggle(const QString& name, std::optional<QPoint> click);

    void release();

    /// Opens the window, at this page where it has pages (empty: its first), and hands over what it looks
    /// like once it has been drawn; never where it cannot be.
    void picture(const QString& name, const QString& page, const std::function<void(const QImage&)>& taker);

Q_SIGNALS:
    /// No window is left, and no click is on its way that means one of them.
    void allClosed();

private:
    struct Kind;
    static const Kind* kind(const QString& name);

    bool open(const QString& name, std::optional<QPoint> click, bool isLeftInactive = false);
    void bringForward(const QString& name);
    void reveal(QQuickWindow& window);
    void closeOnFocusLoss(const QString& name, QQuickWindow& window);
    /// One that took the focus from the window, and so closed it, may be one on its icon.
    bool isClickOnItsWay(const QString& name) const;
    void closed(const QString& name);
    void sayIfAllClosed();

    struct Later {
        void operator()(QQuickWindow* window) const; ///< it may be what calls
    };
    QQmlEngine& engine_;
    RemoteModel& model_;
    std::chrono::milliseconds clickTravel_;
    std::map<QString, std::unique_ptr<QQuickWindow, Later>> open_;
    bool isHeld_ = true;
    QString lostFocus_; ///< the window that closed last by losing the focus
    QElapsedTimer sinceLost_;
    QtLog log_;
};

} // namespace velmora
