// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "program/WindowsService.h"

#include "wire/ModelFace.h"

#include <QDBusConnection>
#include <QDBusError>

namespace velmora {

namespace {

constexpr int quotable = 64; // characters of an unknown name that are quoted
constexpr int longestToken = 512;

/// Qt takes the token for the window that is activated next from here, as it does at a program's start.
void giveLeave(const QString& token)
{
    const bool isUsable = !token.isEmpty() && token.size() <= longestToken && !token.contains(QChar(0));
    if (isUsable)
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
    else
        qunsetenv("XDG_ACTIVATION_TOKEN");
}

} // namespace

bool WindowsService::publish(QDBusConnection bus)
{
    using namespace wire::windows;
    bus.registerObject(QString::fromLatin1(objectPath), QString::fromLatin1(interface), this,
                       QDBusConnection::ExportScriptableSlots);
    return bus.registerService(QString::fromLatin1(serviceName));
}

std::optional<QPoint> WindowsService::place(int x, int y)
{
    return x < 0 || y < 0 ? std::nullopt : std::optional(QPoint(x, y));
}

void WindowsService::Show(const QString& window, const QString& token)
{
    if (refusesUnknown(window)) return;
    giveLeave(token);
    answer(windows_.show(window));
}

void WindowsService::ShowInactive(const QString& window)
{
    if (!refusesUnknown(window)) answer(windows_.showInactive(window));
}

void WindowsService::Toggle(const QString& window, int x, int y, const QString& token)
{
    if (refusesUnknown(window)) return;
    giveLeave(token);
    answer(windows_.toggle(window, place(x, y)));
}

bool WindowsService::refusesUnknown(const QString& window) const
{
    if (Windows::isKnown(window)) return false;
    sendErrorReply(QDBusError::InvalidArgs, tr("There is no window \"%1\".").arg(window.left(quotable)));
    return true;
}

void WindowsService::answer(bool isOpen) const
{
    if (!isOpen) sendErrorReply(QDBusError::Failed, tr("The window could not be made."));
}

} // namespace velmora
