// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "WidgetFrame.h"

#include "Taskbar.h"
#include "WidgetPlacing.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <chrono>

namespace velmora {

namespace {

/// A window that has not moved for so long has come to rest.
constexpr std::chrono::milliseconds restTime{300};

bool isPlaceKnown()
{
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
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
    connect(settings_, &RemoteWidget::changed, this, &WidgetFrame::takeSettings);
    connect(window_, &QWindow::xChanged, this, &WidgetFrame::moved);
    connect(window_, &QWindow::yChanged, this, &WidgetFrame::moved);
    connect(window_, &QWindow::visibleChanged, this, [this](bool isVisible) {
        if (!isVisible && resting_.isActive()) rest(); // it is about to go
    });
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &WidgetFrame::watch);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &WidgetFrame::screensChanged);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &WidgetFrame::screensChanged);
    for (auto* screen : QGuiApplication::screens()) watch(screen);
}

void WidgetFrame::watch(QScreen* screen)
{
    connect(screen, &QScreen::availableGeometryChanged, this, &WidgetFrame::screensChanged);
}

void WidgetFrame::takeSettings()
{
    if (isPlaced_ || !settings_->isKnown()) return;
    place();
    isPlaced_ = true;
}

void WidgetFrame::place()
{
    const auto screens = presentScreens();
    const auto kept = settings_->place();
    window_->setPosition(kept ? widgetPlace(*kept, screens, window_->size())
                              : firstWidgetPlace(screens, window_->size(), firstTop_));
}

void WidgetFrame::beginDrag()
{
    isTheirs_ = true;
    grip_ = QCursor::pos() - window_->position();
    isSystemMoving_ = window_->startSystemMove();
}

void WidgetFrame::drag()
{
    if (!isSystemMoving_ && isPlaceKnown()) window_->setPosition(QCursor::pos() - grip_);
}

void WidgetFrame::nudge(int right, int down)
{
    if (!isPlaceKnown()) return;
    isTheirs_ = true;
    const auto wanted = window_->position() + QPoint(right, down);
    window_->setPosition(widgetPlace(wanted, presentScreens(), window_->size()));
}

void WidgetFrame::moved()
{
    if (isPlaced_ && window_->isVisible()) resting_.start();
}

/// What the window manager does about it now is no wish of the owner's.
void WidgetFrame::screensChanged()
{
    isTheirs_ = false;
    resting_.start();
}

void WidgetFrame::rest()
{
    resting_.stop();
    if (!isTheirs_)
        place();
    else if (settings_->place() != window_->position())
        settings_->keepPlace(window_->position());
}

} // namespace velmora
