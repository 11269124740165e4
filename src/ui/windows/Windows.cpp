// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "windows/Windows.h"

#include "desktop/PanelPlace.h"
#include "desktop/Taskbar.h"
#include "desktop/X11.h"
#include "wire/ModelFace.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <array>
#include <chrono>

namespace velmora {

namespace {

void placePanel(QWindow& window, std::optional<QPoint> click)
{
    const auto screens = presentScreens();
    if (!layers::areUsed()) {
        window.setPosition(panelPlace(click, screens, window.size()));
        return leaveTaskbar(window);
    }
    const auto [screen, place] = panelLayer(click, screens, window.size());
    window.setScreen(QGuiApplication::screens()[static_cast<qsizetype>(screen)]);
    layers::put(window, place);
    layers::setAbove(window, true);
    layers::takeKeyboard(window);
}

/// Qt's own name for it: X11 has the window mapped with a user time of zero.
constexpr auto inactiveProperty = "_q_showWithoutActivating";

} // namespace

struct Windows::Kind {
    const char* name;
    const char* file;
    bool isPanel; ///< belongs to the tray icon: opens beside it, and closes when it loses the focus
};

const Windows::Kind* Windows::kind(const QString& name)
{
    static constexpr std::array kinds{
        Kind{wire::windows::panel, "PanelWindow.qml", true},
        Kind{wire::windows::dashboard, "DashboardWindow.qml", false},
        Kind{wire::windows::smallWidget, "SmallWidgetWindow.qml", false},
        Kind{wire::windows::mediumWidget, "MediumWidgetWindow.qml", false},
    };
    const auto found =
        std::ranges::find_if(kinds, [&](const Kind& one) { return name == QLatin1String(one.name); });
    return found == kinds.end() ? nullptr : &*found;
}

Windows::Windows(QQmlEngine& engine, RemoteModel& model, std::chrono::milliseconds clickTravel)
    : engine_(engine), model_(model), clickTravel_(clickTravel)
{
}

Windows::~Windows()
{
    for (auto& [name, window] : open_) {
        window->disconnect(this);
        delete window.release(); // there may be no loop left to do it later
    }
}

bool Windows::isKnown(const QString& name)
{
    return kind(name) != nullptr;
}

bool Windows::show(const QString& name)
{
    const auto window = open_.find(name);
    if (window == open_.end()) return open(name, std::nullopt);
    window->second->setProperty(inactiveProperty, false);
    if (!isHeld_) bringForward(name);
    return true;
}

bool Windows::showInactive(const QString& name)
{
    return open_.contains(name) || open(name, std::nullopt, true);
}

bool Windows::toggle(const QString& name, std::optional<QPoint> click)
{
    const auto window = open_.find(name);
    if (window != open_.end()) {
        if (!isHeld_) window->second->close();
        return true;
    }
    if (isClickOnItsWay(name)) return true;
    return open(name, click);
}

void Windows::release()
{
    isHeld_ = false;
    for (const auto& [name, window] : open_) reveal(*window);
}

void Windows::picture(const QString& name, const QString& page,
                      const std::function<void(const QImage&)>& taker)
{
    if (!show(name)) return;
    auto* window = open_[name].get();
    if (!page.isEmpty()) window->setProperty("selectedTab", page);
    connect(
        window, &QQuickWindow::frameSwapped, this, [window, taker] { taker(window->grabWindow()); },
        static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
    window->show(); // not to the front: there may be none
}

bool Windows::open(const QString& name, std::optional<QPoint> click, bool isLeftInactive)
{
    const auto* itsKind = kind(name);
    if (!itsKind) return false;
    QQmlComponent component(&engine_, QUrl(QLatin1String("qrc:/qt/qml/Velmora/") + itsKind->file));
    std::unique_ptr<QObject> made(
        component.createWithInitialProperties({{"battery", QVariant::fromValue(&model_)}}));
    auto* window = qobject_cast<QQuickWindow*>(made.get());
    if (!window) {
        log_.error("Windows", "Cannot make the window \"" + name.toStdString() +
                                  "\": " + component.errorString().trimmed().toStdString() + ".");
        return false;
    }
    (void)made.release();
    open_[name].reset(window);
    window->setProperty(inactiveProperty, isLeftInactive);
    if (itsKind->isPanel) {
        placePanel(*window, click);
        closeOnFocusLoss(name, *window);
    }
    if (!isHeld_) bringForward(name);
    connect(window, &QWindow::visibleChanged, this, [this, name](bool isVisible) {
        if (!isVisible) closed(name);
    });
    return true;
}

void Windows::bringForward(const QString& name)
{
    auto& window = *open_[name];
    const auto panel = open_.find(QString::fromLatin1(wire::windows::panel));
    const bool takesFocus = !window.property(inactiveProperty).toBool();
    // GNOME can lose a window's raise while another of the same program goes: the panel goes first. On
    // Wayland it has to stay, as the window that has the focus may hand it on.
    if (x11::server() && takesFocus && panel != open_.end() && panel->second.get() != &window)
        panel->second->close();
    reveal(window);
}

void Windows::reveal(QQuickWindow& window)
{
    window.show();
    if (window.property(inactiveProperty).toBool()) return;
    window.requestActivate();
    window.raise(); // GNOME marks the window as calling for attention if it is raised before it is activated
}

void Windows::closeOnFocusLoss(const QString& name, QQuickWindow& window)
{
    connect(&window, &QWindow::activeChanged, this, [this, name, &window, wasActive = false]() mutable {
        if (std::exchange(wasActive, window.isActive()) && !window.isActive() && window.isVisible()) {
            lostFocus_ = name;
            sinceLost_.start();
            window.close();
        }
    });
}

bool Windows::isClickOnItsWay(const QString& name) const
{
    return lostFocus_ == name && sinceLost_.elapsed() < clickTravel_.count();
}

void Windows::closed(const QString& name)
{
    open_.erase(name);
    if (isClickOnItsWay(name)) {
        QTimer::singleShot(clickTravel_, this, &Windows::sayIfAllClosed);
    } else {
        sayIfAllClosed();
    }
}

void Windows::sayIfAllClosed()
{
    if (open_.empty()) Q_EMIT allClosed();
}

void Windows::Later::operator()(QQuickWindow* window) const
{
    window->deleteLater();
}

} // namespace velmora
