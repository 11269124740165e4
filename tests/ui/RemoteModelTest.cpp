// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/RemoteModel.h"
#include "FakeApplication.h"
#include "PrivateBus.h"
#include "client/ApplicationLink.h"
#include "client/RemoteFleet.h"
#include "desktop/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>
#include <limits>

namespace velmora {
namespace {

using duration::day;

/// Six samples over ten days that lose `loss` points of health.
QVariant historyLosing(double loss)
{
    QList<QVariantMap> records;
    for (int i = 0; i < 6; ++i)
        records.append({{"timestamp", i * 2 * day}, {"health", 100 - loss * i / 5}, {"percentage", 60.0}});
    return QVariant::fromValue(records);
}

TEST(RemoteModel, HasTheFacesPropertiesUnderTheirNames)
{
    const std::map<std::string, QMetaType::Type> types{{"b", QMetaType::Bool},
                                                       {"d", QMetaType::Double},
                                                       {"x", QMetaType::LongLong},
                                                       {"s", QMetaType::QString}};
    for (const auto& property : wire::face::properties) {
        const auto type = types.find(property.type);
        if (type == types.end()) continue;
        SCOPED_TRACE(property.name);
        const auto& meta = RemoteModel::staticMetaObject;
        const auto mirrored = meta.property(meta.indexOfProperty(property.name));
        EXPECT_EQ(mirrored.metaType().id(), type->second);
        RemoteModel model; // takes each under that name
        QVariant value = type->second == QMetaType::QString ? QVariant("Text") : QVariant(1);
        if (mirrored.read(&model).toBool() && type->second == QMetaType::Bool) value = false;
        ASSERT_TRUE(value.convert(mirrored.metaType()));
        model.apply({{property.name, value}});
        EXPECT_EQ(mirrored.read(&model), value);
    }
}

TEST(RemoteModel, RefusesWhatAPropertyCannotBeAndTakesTheRest)
{
    const std::pair<const char*, QVariant> cases[] = {
        {"percentage", std::numeric_limits<double>::quiet_NaN()},
        {"percentage", std::numeric_limits<double>::infinity()},
        {"percentage", 12},
        {"percentage", "12"},
        {"chargingState", 1.0},
        {"isTemporaryOverrideEnabled", "true"},
        {"timeToFull", 3.0},
        {"powerSource", QVariant()},
        {"history", "none"},
        {"degradationText", "a property of ours alone"},
        {"unheard of", 1},
    };
    const RemoteModel fresh;
    for (const auto& [name, value] : cases) {
        SCOPED_TRACE(name);
        RemoteModel model;
        model.apply({{name, value}, {"lowBatteryLimit", 33.0}});
        EXPECT_EQ(model.property(name), fresh.property(name));
        EXPECT_EQ(model.lowBatteryLimit(), 33);
    }
}

struct Linked : testing::Test {
    FakeApplication application;
    RemoteModel model;
};

TEST_F(Linked, TakesAllValuesAndThenEachBatchAtOnce)
{
    application.properties = {
        {"percentage", 79.6}, {"chargingState", "Charging"}, {"history", historyLosing(1)}};
    application.news = {{"isLimitReached", true}};
    ApplicationLink link(application.other, model);
    ASSERT_TRUE(QSignalSpy(&link, &ApplicationLink::ready).wait());
    EXPECT_FALSE(model.isLimitReached()) << "that was before";
    EXPECT_EQ(model.percentage(), 79.6);
    EXPECT_EQ(model.chargingState(), "Charging");
    EXPECT_EQ(model.history().size(), 6U);
    EXPECT_EQ(model.degradationText(), "-3.0% / mo");
    EXPECT_EQ(model.degradationColor(), "batteryDanger");
    EXPECT_EQ(model.customChargeLimit(), 80) << "what does not come keeps what a model begins with";

    QSignalSpy changed(&model, &RemoteModel::changed);
    application.announce({{"percentage", 80.0}, {"isLimitReached", true}, {"chargingState", "Idle"}});
    ASSERT_TRUE(changed.wait());
    EXPECT_EQ(model.percentage(), 80);
    EXPECT_TRUE(model.isLimitReached());
    EXPECT_EQ(changed.count(), 1);

    application.properties["history"] = historyLosing(0.5);
    application.announce({}, {"history"});
    ASSERT_TRUE(changed.wait());
    EXPECT_EQ(model.degradationText(), "-1.5% / mo");

    application.announce({{"selectedDeviceID", QStringList{"a"}}});
    ASSERT_TRUE(changed.wait());
    EXPECT_EQ(model.selectedDeviceID(), "a");
}

TEST_F(Linked, CarriesWishesInTheTypesOfTheWire)
{
    ApplicationLink link(application.other, model);
    model.set("customChargeLimit", 90); // QML's whole numbers are integers
    model.set("isAppleRecommendedModeEnabled", false);
    model.set("percentage", 3.0);
    model.set("customChargeLimit", "much");
    model.toggleTemporaryOverride();
    link.activate("dashboard");
    link.quit();
    EXPECT_TRUE(QTest::qWaitFor([&] { return application.calls.contains("Quit"); }));
    EXPECT_EQ(application.calls.join(' '),
              "customChargeLimit=90double isAppleRecommendedModeEnabled=falsebool toggleTemporaryOverride "
              "ActivateActiondashboard Quit");
}

TEST_F(Linked, RecordsTravelBothWays)
{
    namespace wired = wire::face::fleet;
    application.bus.registerVirtualObject(wired::objectPath, &application);
    const QVariantMap place{{"kind", "server"}, {"host", "records"}, {"port", qint64{6000}}, {"user", "ada"}};
    const QList<QVariantMap> devices{{{"deviceID", "b"}, {"deviceName", "Desk"}}, {}};
    application.beside[wired::interface] = {
        {"isOn", true}, {"fault", "password"}, {"place", place}, {"devices", QVariant::fromValue(devices)}};
    RemoteFleet fleet;
    ObjectLink link(application.other, fleet);
    ASSERT_TRUE(QSignalSpy(&link, &ObjectLink::settled).wait());
    EXPECT_TRUE(fleet.placeText().contains("records"));
    EXPECT_EQ(fleet.place().value("port"), 6000);
    EXPECT_EQ(fleet.problemText(), "User or password is wrong.");
    EXPECT_EQ(fleet.devices()->rowCount(), 2);
    fleet.command("b", 60, true, false);
    fleet.use(fleet.place(), "secret");
    EXPECT_TRUE(QTest::qWaitFor([&] { return application.records.size() == 2; }));
    EXPECT_EQ(application.calls.join(' '), "command use");
    const QVariantMap wanted{
        {"deviceID", "b"}, {"limit", 60.0}, {"isAutoProtectOn", true}, {"isStorageModeOn", false}};
    EXPECT_EQ(application.records.value(0), wanted);
    EXPECT_EQ(application.records.value(1).value("port").typeId(), QMetaType::LongLong)
        << "as the wire has it";
    EXPECT_EQ(application.records.value(1).value("password"), "secret");
}

TEST_F(Linked, IsOverWithTheApplication)
{
    ApplicationLink link(application.other, model);
    ASSERT_TRUE(QSignalSpy(&link, &ApplicationLink::ready).wait());
    QSignalSpy gone(&link, &ApplicationLink::gone);
    application.leave();
    EXPECT_TRUE(gone.wait());

    ApplicationLink late(application.other, model);
    EXPECT_TRUE(QSignalSpy(&late, &ApplicationLink::gone).wait());
    EXPECT_FALSE(late.isReady());
}

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
