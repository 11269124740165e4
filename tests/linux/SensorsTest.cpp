// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakePlatform.h"
#include "RecordingLog.h"
#include "SysfsTree.h"
#include "power/LinuxPowerSources.h"
#include "power/LinuxThermalLevel.h"
#include "power/TimeEstimator.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

namespace key = power_source_key;

struct LinuxPowerSourcesTest : testing::Test {
    FakePlatform platform;

    std::vector<PowerSourceDescription> read(const SysfsTree& tree)
    {
        return LinuxPowerSources(tree.sysfs, *platform.clock, *platform.log, nullptr).descriptions();
    }

    template <typename T>
    static T get(const PowerSourceDescription& description, const char* name, T missing)
    {
        const auto found = description.find(name);
        return found == description.end() ? missing : std::get<T>(found->second);
    }
};

constexpr double unknown = -1;

TEST_F(LinuxPowerSourcesTest, ReadsCapturedLaptopsAsTheirOwnersWould)
{
    enum class Does { charge, discharge, hold, full };
    const std::tuple<const char*, double, Does, const char*, std::int64_t, std::int64_t, double> cases[] = {
        {"apple-m1-652-percent", 100, Does::discharge, "Battery Power", -1, -1, unknown},
        {"apple-m4-pro", 100, Does::full, "AC Power", -1, -1, 82.99},
        {"asus-ac0", 79, Does::charge, "AC Power", 89, -1, 83.58},
        {"asus-ux32vd", 88.45, Does::discharge, "Battery Power", -1, 145, 97.75},
        {"board-axp20x-not-charging", 98, Does::hold, "AC Power", -1, -1, unknown},
        {"chromebook-juniper", 99, Does::full, "AC Power", -1, -1, 88.06},
        {"dell-t453x", 72.37, Does::charge, "AC Power", 46, -1, 96.99},
        {"dell-xps15-9550-no-current", 80, Does::discharge, "Battery Power", -1, -1, 96.53},
        {"framework13-charging", 99, Does::charge, "AC Power", 14, -1, 100},
        {"gpd-pocket", 53, Does::discharge, "Battery Power", -1, 2445, 100},
        {"hp-current-enodev", 58, Does::discharge, "Battery Power", -1, -1, 100},
        {"hp-pavilion-zero-current", 39, Does::discharge, "Battery Power", -1, -1, 100},
        {"ideapad-worn-out", 9, Does::charge, "AC Power", -1, -1, 26.11},
        {"legion-slim-with-mouse", 100, Does::full, "AC Power", -1, -1, 100},
        {"lenovo-z500", 59, Does::hold, "AC Power", -1, -1, 93.95},
        {"nokia-n9", 15, Does::discharge, "Battery Power", -1, 89, 100},
        {"sunway-notebook-milli-units", 100, Does::discharge, "Battery Power", -1, -1, 100},
        {"thinkpad-00hw022-heavy-load", 9, Does::discharge, "Battery Power", -1, 5, 100},
        {"thinkpad-42t4865-worn", 27, Does::charge, "AC Power", 26, -1, 32.18},
        {"thinkpad-acpi-two-batteries", 86.18, Does::discharge, "Battery Power", -1, -1, 91.82},
        {"thinkpad-second-battery-empty", 0, Does::hold, "AC Power", -1, -1, 97.00},
        {"thinkpad-t14-pending", 22, Does::hold, "AC Power", -1, -1, 93.47},
        {"thinkpad-t470-two-batteries", 99.48, Does::hold, "AC Power", -1, -1, 96.62},
        {"thinkpad-x220-worn-out", 82.29, Does::hold, "AC Power", -1, -1, 5.74},
    };
    for (const auto& [machine, percentage, does, state, toFull, toEmpty, health] : cases) {
        SCOPED_TRACE(machine);
        const auto all = read(SysfsTree(machine));
        ASSERT_EQ(all.size(), 1U);
        const auto& own = all.front();
        EXPECT_EQ(get<std::string>(own, key::type, ""), "InternalBattery");
        EXPECT_NEAR(get(own, key::currentCapacity, unknown), percentage, 0.01);
        EXPECT_EQ(get<std::int64_t>(own, key::maxCapacity, 0), 100);
        EXPECT_EQ(get(own, key::isCharging, false), does == Does::charge);
        EXPECT_EQ(get(own, key::isCharged, false), does == Does::full);
        EXPECT_EQ(get<std::string>(own, key::powerSourceState, ""), state);
        EXPECT_EQ(get<std::int64_t>(own, key::timeToFullCharge, 0), toFull);
        EXPECT_EQ(get<std::int64_t>(own, key::timeToEmpty, 0), toEmpty);
        EXPECT_NEAR(get(own, key::health, unknown), health, 0.01);
    }
}

TEST_F(LinuxPowerSourcesTest, FindsNoBatteryOfItsOwnInADesktop)
{
    for (const auto* machine : {"desktop-empty-class", "desktop-with-mouse", "desktop-with-keyboard"})
        EXPECT_TRUE(read(SysfsTree(machine)).empty()) << machine;
    EXPECT_EQ(platform.log->count(), 0U);
}

TEST_F(LinuxPowerSourcesTest, NamesAnExternalBatteryAfterTheLaptopsOwn)
{
    SysfsTree tree;
    tree.supply("AUPS", {{"type", "UPS"}, {"status", "Discharging"}, {"capacity", "70"}, {"online", "1"}});
    tree.supply("BAT0", {{"type", "Battery"}, {"status", "Charging"}, {"capacity", "40"}});
    const auto all = read(tree);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(get<std::string>(all[0], key::type, ""), "InternalBattery");
    EXPECT_EQ(get<std::string>(all[0], key::powerSourceState, ""), "AC Power");
    EXPECT_EQ(get<std::string>(all[1], key::type, ""), "UPS");
    EXPECT_EQ(get(all[1], key::currentCapacity, unknown), 70);
    EXPECT_EQ(get<std::string>(all[1], key::powerSourceState, ""), "Battery Power");
}

TEST_F(LinuxPowerSourcesTest, IsSilentAboutALevelThatNobodyKnows)
{
    SysfsTree tree;
    tree.supply("BAT0", {{"type", "Battery"}, {"status", "Discharging"}, {"energy_full", "50000000"}});
    tree.breakFile("class/power_supply/BAT0/capacity").breakFile("class/power_supply/BAT0/energy_now");
    EXPECT_TRUE(read(tree).empty()) << "a level of 0 would be a false alarm";
}

TEST(LinuxThermalLevel, JudgesCapturedZonesByTheirOwnTrips)
{
    const struct {
        const char* machine;
        int zone;
        const char* milliCelsius; ///< null: as captured
        int level;
    } cases[] = {
        {"laptop-broadwell-full", 0, nullptr, 0}, // passive 95, critical 104
        {"laptop-broadwell-full", 0, "89999", 0},
        {"laptop-broadwell-full", 0, "90000", 1},
        {"laptop-broadwell-full", 0, "98001", 2},
        {"laptop-broadwell-full", 0, "99000", 3},
        {"laptop-two-zones", 0, nullptr, 0}, // critical 82 alone
        {"laptop-two-zones", 0, "77000", 3},
        {"lenovo-z500", 0, "121999", 2},          // critical and hot 127
        {"thermal-zenbook-ux410", 4, "82000", 0}, // fans from 81, passive 89, hot 97, critical 98
        {"thermal-zenbook-ux410", 4, "84000", 1},
        {"thermal-hp-spectre", 1, "50000", 0}, // trips at 0 and absolute zero, passive 60
        {"thermal-hp-spectre", 1, "64000", 2},
        {"thermal-many-zones", 11, nullptr, 0}, // a wireless card
        {"thermal-active-127", 0, "128000", 0}, // a fan
        {"thermal-active-127", 1, "90000", 0},  // invalid trips alone
        {"thermal-active-127", 2, "96000", 3},  // critical 100
        {"thermal-int3400", 1, "99000", 0},     // disabled
        {"thermal-unreadable-wireless", 0, nullptr, 0},
        {"laptop-two-zones", 0, "-274000", 0},
        {"laptop-two-zones", 0, "255000", 0},
        {"laptop-two-zones", 0, "hot", 0},
    };
    for (const auto& [machine, zone, temperature, level] : cases) {
        SysfsTree tree(machine);
        if (temperature) tree.zone(zone, {{"temp", temperature}});
        RecordingLog log;
        EXPECT_EQ(LinuxThermalLevel(tree.sysfs, log).level(), level)
            << machine << ' ' << (temperature ? temperature : "");
    }
}

TEST(LinuxThermalLevel, TellsOfAnotherLevelWhenLookedAt)
{
    SysfsTree tree;
    tree.zone(1, {{"type", "broken"}, {"mode", "enabled"}}).breakFile("class/thermal/thermal_zone1/temp");
    tree.zone(3, {{"type", "cpu"}, {"trip_point_0_temp", "100000"}, {"trip_point_0_type", "critical"}});
    RecordingLog log;
    LinuxThermalLevel thermal(tree.sysfs, log);
    int told = 0;
    const auto observing = thermal.observeChanges([&] { ++told; });
    for (const auto* temperature : {"50000", "85000", "86000", "96000", "50000"}) {
        tree.zone(3, {{"temp", temperature}});
        thermal.look();
    }
    EXPECT_EQ(told, 3);
    EXPECT_EQ(log.count(), 1U) << "the broken zone, once";
}

using namespace std::chrono_literals;

/// 60 Wh when full, 30 in it.
MachineBattery halfFull(std::optional<double> rate)
{
    MachineBattery battery;
    battery.energyNow = 30;
    battery.energyFull = 60;
    battery.rate = rate;
    battery.isCharging = rate > 0;
    battery.isDischarging = !battery.isCharging;
    return battery;
}

TEST(TimeEstimator, TellsOnlyWhatCanBeKnown)
{
    MachineBattery held = halfFull(0);
    held.isDischarging = false;
    MachineBattery gauge = halfFull(std::nullopt);
    gauge.timeToEmpty = 90min;
    MachineBattery nearlyThere = halfFull(30);
    nearlyThere.energyNow = 60;
    MachineBattery noEnergy = halfFull(-10);
    noEnergy.energyNow.reset();
    MachineBattery noFull = halfFull(-10);
    noFull.energyFull.reset();
    const std::tuple<const char*, MachineBattery, std::int64_t, std::int64_t> cases[] = {
        {"charging at 30 W", halfFull(30), 60, -1},
        {"discharging at 10 W", halfFull(-10), -1, 180},
        {"held", held, -1, -1},
        {"the gauge's own", gauge, -1, 90},
        {"a week", halfFull(-0.15), -1, -1},
        {"the last minute", nearlyThere, 1, -1},
        {"no energy", noEnergy, -1, -1},
        {"nobody knows what it holds when full", noFull, -1, 180},
    };
    for (const auto& [what, battery, toFull, toEmpty] : cases) {
        SCOPED_TRACE(what);
        const auto minutes = TimeEstimator().update(battery, 1h);
        EXPECT_EQ(minutes.toFull, toFull);
        EXPECT_EQ(minutes.toEmpty, toEmpty);
    }
}

TEST(TimeEstimator, FollowsTheMeanAndNotTheMoment)
{
    TimeEstimator estimator;
    auto now = 1h + 0ms;
    for (int i = 0; i < 60; ++i) estimator.update(halfFull(-10), now += 2s);
    const auto burst = estimator.update(halfFull(-40), now += 2s).toEmpty;
    EXPECT_LT(burst, 180);
    EXPECT_GT(burst, 150) << "a page that loads is no change of life";
    EXPECT_GT(estimator.update(halfFull(0), now += 2s).toEmpty, 150) << "nor is a reading left out";
    for (int i = 0; i < 200; ++i) estimator.update(halfFull(-40), now += 2s);
    EXPECT_EQ(estimator.update(halfFull(-40), now += 2s).toEmpty, 45);

    EXPECT_EQ(estimator.update(halfFull(20), now += 2s).toFull, 90) << "plugged in: a new mean";
    EXPECT_EQ(estimator.update(halfFull(-5), now += 6min).toEmpty, 360) << "it slept meanwhile";
}

} // namespace
} // namespace velmora
