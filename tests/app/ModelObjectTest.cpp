// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/ModelObject.h"
#include "SessionTest.h"
#include "bus/Exports.h"
#include "bus/Records.h"

#include <cmath>
#include <limits>
#include <set>

namespace velmora {
namespace {

constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties";

struct ModelObjectTest : SessionTest {
    ModelObjectTest()
    {
        matches = dbus::match(stranger.get(), {.interface = propertiesInterface},
                              dbus::serve<ModelObjectTest, &ModelObjectTest::changed>, this);
        ask(call("org.freedesktop.DBus.Peer", "Ping")); // the bus now knows what to deliver
    }

    template <typename T>
    std::string set(const char* property, const char* type, T value)
    {
        const auto message = call(propertiesInterface, "Set");
        dbus::check(sd_bus_message_append(message.get(), "ssv", wire::face::interface, property, type, value),
                    "append");
        ask(message);
        return lastError;
    }

    std::string operate(const char* name)
    {
        ask(call(wire::face::interface, name));
        return lastError;
    }

    int changed(sd_bus_message* signal)
    {
        std::set<std::string> names;
        dbus::check(sd_bus_message_skip(signal, "s"), "skip");
        const auto values = dbus::readArchive(signal);
        for (const auto& [name, value] : values.values()) names.insert(name);
        dbus::check(sd_bus_message_enter_container(signal, 'a', "s"), "invalidated");
        for (const char* name = nullptr; sd_bus_message_read_basic(signal, 's', &name) > 0;)
            names.insert(name);
        announced.push_back(names);
        return 0;
    }

    FakePlatform machine;
    std::shared_ptr<FakeDaemonClient> daemon = std::make_shared<FakeDaemonClient>();
    BatteryModel model{daemon, nullptr};
    ModelObject object{loop, application.get(), model};
    std::vector<std::set<std::string>> announced; ///< names, a signal each
    dbus::Slot matches;
};

TEST_F(ModelObjectTest, GivesEveryPropertyWithItsDeclaredType)
{
    model.lastCloudSyncDate.set(Date{5});
    model.selectedDeviceID.set("laptop");
    model.history.set({{Date{1}, 50, 97, "Nominal", true}, {Date{2}, 51, 96, "Fair", false}});
    model.fleetStates.set({SharedBatteryState{.percentage = 70, .deviceID = "laptop"}});
    const auto question = call(propertiesInterface, "GetAll");
    dbus::check(sd_bus_message_append(question.get(), "s", wire::face::interface), "append");
    const auto answer = ask(question);
    EXPECT_EQ(lastError, "") << "sd-bus holds each value to the declared type";
    dbus::check(sd_bus_message_enter_container(answer.get(), 'a', "{sv}"), "enter");
    std::size_t count = 0;
    while (sd_bus_message_skip(answer.get(), "{sv}") > 0) ++count;
    EXPECT_EQ(count, std::size(wire::face::properties));
}

TEST_F(ModelObjectTest, AnnouncesWhatChangedOnceATurn)
{
    for (int push = 0; push < 3; ++push)
        daemon->push({80, true, "AC", "Fair", 80, 2, 42, -1, false}); // as the model's intake assigns it
    machine.settle();
    ASSERT_TRUE(eventually([&] { return !announced.empty(); }));
    const std::set<std::string> first{"percentage", "chargingState", "thermalState",  "powerSource",
                                      "timeToFull", "timeToLimit",   "isLimitReached"};
    EXPECT_EQ(announced, std::vector{first});
    model.customHysteresis.set(2); // as it was
    model.history.set({{Date{1}, 50, 97, "Nominal", true}});
    ASSERT_TRUE(eventually([&] { return announced.size() > 1; }));
    EXPECT_EQ(announced.back(), std::set<std::string>{"history"});
}

TEST_F(ModelObjectTest, ASettingReachesTheDaemonAtOnceAndAloneWhatIsOne)
{
    std::size_t sentAsPerson = 0;
    double limitBefore = 0;
    object.asPerson = [&](const auto& act) {
        const auto before = daemon->sent.size();
        limitBefore = model.customChargeLimit.get();
        act();
        sentAsPerson += daemon->sent.size() - before;
    };
    EXPECT_EQ(set("customChargeLimit", "d", 90.0), "");
    EXPECT_EQ(limitBefore, 80) << "the change itself is the person's";
    EXPECT_EQ(set("isAppleRecommendedModeEnabled", "b", 0), "");
    ASSERT_EQ(daemon->sent.size(), 2U) << "with no time passing";
    EXPECT_EQ(sentAsPerson, 2U);
    EXPECT_EQ(daemon->sent.back(),
              (ChargingSettings{.isAppleRecommendedMode = false, .customChargeLimit = 90}));
    EXPECT_EQ(set("isSimulationModeEnabled", "b", 1), "");
    EXPECT_TRUE(model.isSimulationModeEnabled.get());
    EXPECT_EQ(daemon->sent.size(), 2U);
}

TEST_F(ModelObjectTest, RefusesWhatMakesNoSense)
{
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double limit : {std::nan(""), infinite, -infinite, 19.9, 100.1, 1e300})
        EXPECT_EQ(set("customChargeLimit", "d", limit), SD_BUS_ERROR_INVALID_ARGS) << limit;
    EXPECT_NE(set("customChargeLimit", "s", "80"), "");
    EXPECT_NE(set("percentage", "d", 80.0), "") << "read-only";
    EXPECT_NE(set("nothing", "d", 80.0), "");
    EXPECT_NE(operate("format"), "");
    EXPECT_TRUE(daemon->sent.empty());
    EXPECT_EQ(model.customChargeLimit.get(), 80);
    const auto two = call(propertiesInterface, "Set");
    dbus::check(
        sd_bus_message_append(two.get(), "ssv", wire::face::interface, "selectedDeviceID", "as", 2, "a", "b"),
        "append");
    ask(two);
    EXPECT_EQ(lastError, SD_BUS_ERROR_INVALID_ARGS);
}

namespace wired = wire::face::widget;

struct WidgetObjectTest : SessionTest {
    WidgetObjectTest() { exports::serve(object, settings); }

    template <typename... Arguments>
    std::string set(const char* property, const char* type, Arguments... arguments)
    {
        const auto message = call("org.freedesktop.DBus.Properties", "Set", wired::smallPath);
        dbus::check(sd_bus_message_append(message.get(), "ss", wired::interface, property), "append");
        dbus::check(sd_bus_message_append(message.get(), "v", type, arguments...), "append");
        ask(message);
        return lastError;
    }

    FakePlatform machine;
    WidgetSettings settings{"small"};
    ExportedObject object{loop, application.get(), wired::small};
};

TEST_F(WidgetObjectTest, IsSetFromOutsideWithinTheDisplay)
{
    EXPECT_EQ(set("place", "ai", 2, -7, 32'767), "");
    EXPECT_EQ(settings.place.get(), (WidgetPlace{-7, 32'767}));
    EXPECT_EQ(set("place", "ai", 2, 1, 32'768), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(set("place", "ai", 1, 1), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(set("place", "ai", 3, 1, 2, 3), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(settings.place.get(), (WidgetPlace{-7, 32'767}));
    EXPECT_EQ(set("place", "ai", 0), "");
    EXPECT_EQ(settings.place.get(), std::nullopt);
}

} // namespace
} // namespace velmora
