// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Widgets/WidgetFrame.h"

#include "Widgets/WidgetPlacing.h"
#include "desktop/Layers.h"
#include "desktop/Taskbar.h"
#include "desktop/WindowManager.h"

#include <QCursor>
#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>
#include <chrono>
#include <utility>

namespace velmora {

namespace {

/// A window that has not moved for so long has come to rest.
constexpr std::chrono::milliseconds restTime{300};

/// A layer surface cannot leave it.
std::vector<ScreenArea> screenOf(const QWindow& window)
{
    const auto* screen = window.screen();
    return {{screen->geometry(), screen->availableGeometry(), screen->devicePixelRatio()}};
}

bool isPlaceKnown()
{
    return layers::areUsed() || !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

WidgetFrame::WidgetFrame(QObject* parent) : QObject(parent)
{
    resting_.setSingleShot(true);
    resting_.setInterval(restTime);
    connect(&resting_, &QTimer::timeout, this, &WidgetFrame::rest);
}

void WidgetFrame::componentComplete()
{
    if (!isPlaceKnown()) return;
    leaveTaskbar(*window_);
    place();
    takeSettings();
    if (layers::areUsed()) followPin();
    connect(settings_, &RemoteWidget::changed, this, &WidgetFrame::takeSettings);
    connect(window_, &QWindow::xChanged, this, &WidgetFrame::moved);
    connect(window_, &QWindow::yChanged, this, &WidgetFrame::moved);
    connect(window_, &QWindow::widthChanged, this, &WidgetFrame::roomChanged); // with the size of type
    connect(window_, &QWindow::heightChanged, this, &WidgetFrame::roomChanged);
    connect(window_, &QWindow::visibleChanged, this, [this](bool isVisible) {
        if (isVisible) return roomChanged(); // the window manager may have placed it elsewhere
        if (resting_.isActive()) rest();     // it is about to go
    });
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &WidgetFrame::watch);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &WidgetFrame::roomChanged);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &WidgetFrame::roomChanged);
    for (auto* screen : QGuiApplication::screens()) watch(screen);
}

/// Below all windows it lies on the desktop, as the icons there do.
void WidgetFrame::followPin()
{
    layers::setAbove(*window_, settings_->isPinned());
    connect(settings_, &RemoteWidget::changed, this, [this] {
        layers::setAbove(*window_, settings_->isPinned());
        Q_EMIT frameWanted();
    });
}

void WidgetFrame::watch(QScreen* screen)
{
    connect(screen, &QScreen::availableGeometryChanged, this, &WidgetFrame::roomChanged);
}

void WidgetFrame::takeSettings()
{
    if (!settings_->isFed()) return;
    const bool isMeantElsewhere = settings_->place().value_or(restPosition_) != restPosition_;
    if (isPlaced_ && (!isMeantElsewhere || resting_.isActive())) return;
    place();
    isPlaced_ = true;
}

void WidgetFrame::place()
{
    const auto screens = presentScreens();
    const auto kept = settings_->place();
    restPosition_ = kept ? widgetPlace(*kept, screens, window_->size())
                         : firstWidgetPlace(screens, window_->size(), firstTop_);
    moveTo(restPosition_);
}

QPoint WidgetFrame::position() const
{
    return layers::areUsed() ? layerPosition_ : window_->position();
}

void WidgetFrame::moveTo(QPoint position)
{
    if (!layers::areUsed()) return window_->setPosition(position);
    auto* screen = QGuiApplication::screenAt(QRect(position, window_->size()).center());
    if (screen && !window_->isVisible()) window_->setScreen(screen); // a layer surface stays on its screen
    layerPosition_ = position;
    const auto corner = position - window_->screen()->geometry().topLeft();
    layers::put(*window_, {Qt::TopEdge | Qt::LeftEdge, {corner.x(), corner.y(), 0, 0}});
    Q_EMIT frameWanted();
}

bool WidgetFrame::isUnmanaged()
{
    return doesManagerIgnorePlaces();
}

void WidgetFrame::beginDrag()
{
    movedByUser_ = true;
    dragOffset_ = QCursor::pos() - window_->position();
    if (layers::areUsed() || isUnmanaged()) return; // nobody moves it for us
    auto* holder = window_->mouseGrabberItem();
    if (window_->startSystemMove() && holder) holder->ungrabMouse(); // it may never hear of the release
}

void WidgetFrame::drag()
{
    // Compositors disagree on what the pointer's place means while the surface below it moves.
    if (isPlaceKnown() && !layers::areUsed()) window_->setPosition(QCursor::pos() - dragOffset_);
}

void WidgetFrame::endDrag()
{
    if (!layers::areUsed()) return;
    const auto moved = QCursor::pos() - window_->position() - dragOffset_;
    nudge(moved.x(), moved.y());
}

void WidgetFrame::nudge(int right, int down)
{
    if (!isPlaceKnown()) return;
    movedByUser_ = true;
    const auto wanted = position() + QPoint(right, down);
    const auto screens = layers::areUsed() ? screenOf(*window_) : presentScreens();
    moveTo(widgetPlace(wanted, screens, window_->size()));
    if (layers::areUsed()) moved();
}

void WidgetFrame::moved()
{
    if (isPlaced_ && window_->isVisible()) resting_.start();
}

/// What the window manager does now is not the user's move.
void WidgetFrame::roomChanged()
{
    movedByUser_ = false;
    resting_.start();
}

void WidgetFrame::rest()
{
    resting_.stop();
    if (!std::exchange(movedByUser_, true)) return place();
    if (std::exchange(restPosition_, position()) != position()) settings_->keepPlace(restPosition_);
}

} // namespace velmora
