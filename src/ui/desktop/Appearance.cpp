// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Appearance.h"

#include "desktop/Compositor.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

const auto service = QStringLiteral("org.freedesktop.portal.Desktop");
const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
const auto interface = QStringLiteral("org.freedesktop.portal.Settings");

const auto appearanceSpace = QStringLiteral("org.freedesktop.appearance");
const auto colorScheme = QStringLiteral("color-scheme");
const auto textSpace = QStringLiteral("org.gnome.desktop.interface");
const auto textScale = QStringLiteral("text-scaling-factor");

constexpr QRgb darkFrame = 0xff2d2d2d;
constexpr QRgb lightFrame = 0xffefefef;

constexpr int portalPatience = 1'000; // ms; nothing blocks on it, a late answer still counts

/// `Read` wraps its answer in one variant too many.
QVariant unwrapped(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

bool isPaletteDark()
{
    const auto palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

} // namespace

Appearance::Appearance(QObject* parent, const QDBusConnection& bus)
    : QObject(parent), translucent_(isCompositing())
{
    const auto override = qEnvironmentVariable("VELMORA_APPEARANCE");
    isOverridden_ = override == "light" || override == "dark";
    if (isOverridden_) preference_ = override == "dark";
    qGuiApp->installEventFilter(this);
    connect(this, &Appearance::changed, this, &Appearance::colourFrames);
    colourFrames();
    if (!bus.isConnected()) return;
    qRegisterMetaType<QDBusVariant>(); // the slot's parameter is looked up by its name
    QDBusConnection(bus).connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                                 SLOT(settingChanged(QString, QString, QDBusVariant)));
    ask(bus, appearanceSpace, colorScheme);
    ask(bus, textSpace, textScale);
}

bool Appearance::isDark() const
{
    return preference_.value_or(isPaletteDark());
}

bool Appearance::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ApplicationPaletteChange) Q_EMIT changed();
    return QObject::eventFilter(watched, event);
}

/// Qt draws a frame where the compositor draws none, as on GNOME without XWayland, in the palette's colours.
void Appearance::colourFrames()
{
    if (framesFor_ == preference_) return;
    framesFor_ = preference_; // first: a new palette is news to this, too
    QGuiApplication::setPalette(!preference_   ? QPalette()
                                : *preference_ ? QPalette(darkFrame)
                                               : QPalette(lightFrame));
}

void Appearance::setOpaque()
{
    translucent_ = false;
    Q_EMIT changed();
}

void Appearance::ask(const QDBusConnection& bus, const QString& space, const QString& key)
{
    auto call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    call.setArguments({space, key});
    ++questions_;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, portalPatience), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, space, key] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid()) take(space, key, reply.value().variant());
        if (--questions_ == 0) Q_EMIT settled();
        watcher->deleteLater();
    });
}

void Appearance::settingChanged(const QString& space, const QString& key, const QDBusVariant& value)
{
    take(space, key, value.variant());
}

void Appearance::take(const QString& space, const QString& key, const QVariant& value)
{
    const auto plain = unwrapped(value);
    if (space == appearanceSpace && key == colorScheme && !isOverridden_) {
        const auto scheme = plain.toUInt();
        preference_ = scheme == 1 ? std::optional(true) : scheme == 2 ? std::optional(false) : std::nullopt;
    } else if (space == textSpace && key == textScale && std::isfinite(plain.toDouble())) {
        fontScale_ = std::clamp(plain.toDouble(), 0.75, 1.5);
    } else {
        return;
    }
    Q_EMIT changed(); // NOLINT(readability-misleading-indentation): the linter does not see Q_EMIT
}

} // namespace velmora
