// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Appearance.h"
#include "PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QTest>
#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(Appearance, FollowsThePortalAndNobodyElse)
{
    const PrivateBus daemon;
    const auto connect = [&](const char* name) {
        return QDBusConnection::connectToBus(daemon.address().c_str(), name);
    };
    const auto say = [](QDBusConnection from, double scale) {
        auto signal = QDBusMessage::createSignal("/org/freedesktop/portal/desktop",
                                                 "org.freedesktop.portal.Settings", "SettingChanged");
        from.send(signal << "org.gnome.desktop.interface"
                         << "text-scaling-factor" << QVariant::fromValue(QDBusVariant(scale)));
    };
    Appearance appearance(nullptr, connect("window"));
    QList<double> heard;
    QObject::connect(&appearance, &Appearance::changed, [&] { heard << appearance.fontScale(); });
    auto portal = connect("portal"); // starts late, as it is wanted
    ASSERT_TRUE(portal.registerService("org.freedesktop.portal.Desktop"));
    say(portal, 1.25);
    say(connect("forger"), 1.4);
    portal.unregisterService("org.freedesktop.portal.Desktop");
    say(portal, 1.45);
    ASSERT_TRUE(portal.registerService("org.freedesktop.portal.Desktop"));
    say(portal, 1.5);
    EXPECT_TRUE(QTest::qWaitFor([&] { return heard.contains(1.5); }));
    EXPECT_EQ(heard, (QList<double>{1.25, 1.5}));
    for (const auto* name : {"window", "portal", "forger"}) QDBusConnection::disconnectFromBus(name);
}

} // namespace
} // namespace velmora
