// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/LinuxPowerSources.h"

#include "FakePlatform.h"
#include "SysfsTree.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

namespace key = power_source_key;

class LinuxPowerSourcesTest : public testing::Test {
protected:
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
    const struct {
        const char* machine;
        double percentage;
        Does does;
        const char* state;
        std::int64_t toFull, toEmpty;
        double health;
    } cases[] = {
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

} // namespace
} // namespace velmora
