// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/PowerSupplyReader.h"

#include "RecordingLog.h"
#include "SysfsTree.h"
#include "power/MachineBattery.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using Attributes = SysfsTree::Attributes;

/// A healthy laptop on battery: 25 of 40 Wh (50 by design), 10 W going out.
SysfsTree& healthy(SysfsTree& tree)
{
    return tree.supply("BAT0", {{"type", "Battery"},
                                {"present", "1"},
                                {"status", "Discharging"},
                                {"capacity", "62"},
                                {"energy_now", "25000000"},
                                {"energy_full", "40000000"},
                                {"energy_full_design", "50000000"},
                                {"power_now", "10000000"},
                                {"cycle_count", "300"}});
}

TEST(PowerSupplyReader, ResolvesContradictionsByItsRules)
{
    constexpr double none = -999;
    const std::tuple<const char*, Attributes, double, double, double, double, unsigned> cases[] = {
        {"nothing wrong", {}, 62, 25, -10, 80, 0},
        {"capacity a little over", {{"capacity", "104"}, {"energy_now", "41000000"}}, 100, 40, -10, 80, 0},
        {"capacity far over", {{"capacity", "652"}}, 62.5, 25, -10, 80, 1},
        {"capacity not a number", {{"capacity", "many\xff"}}, 62.5, 25, -10, 80, 1},
        {"capacity stuck at 0", {{"capacity", "0"}}, 62.5, 25, -10, 80, 1},
        {"now six times full", {{"energy_now", "240000000"}}, 62, 24.8, -10, 80, 1},
        {"now 0 with charge left", {{"energy_now", "0"}}, 62, 24.8, -10, 80, 1},
        {"now 0, truly", {{"energy_now", "0"}, {"capacity", "0"}}, 0, 0, -10, 80, 0},
        {"now far from capacity", {{"energy_now", "10000000"}}, 62, 24.8, -10, 80, 1},
        {"now too long for a number", {{"energy_now", std::string(40, '9')}}, 62, 24.8, -10, 80, 1},
        {"full 0", {{"energy_full", "0"}}, 62, 31, -10, none, 2},
        {"full and design 0", {{"energy_full", "0"}, {"energy_full_design", "0"}}, 62, 25, -10, none, 2},
        {"design absurdly small", {{"energy_full_design", "20000000"}}, 62, 25, -10, none, 0},
        {"design absurdly large", {{"energy_full_design", "9000000000"}}, 62, 25, -10, none, 1},
        {"new cells above design", {{"energy_full_design", "39000000"}}, 62, 25, -10, 100, 0},
        {"power signed", {{"power_now", "-10000000"}}, 62, 25, -10, 80, 0},
        {"power signed the other way", {{"status", "Charging"}, {"power_now", "-9000000"}}, 62, 25, 9, 80, 0},
        {"power beyond belief", {{"power_now", "655350000"}}, 62, 25, none, 80, 1},
        {"power of a gauge's noise", {{"status", "Not charging"}, {"power_now", "11000"}}, 62, 25, 0, 80, 0},
        {"a status of its own", {{"status", "Resting"}, {"power_now", "-4000000"}}, 62, 25, -4, 80, 1},
    };
    for (const auto& [what, changed, percentage, energyNow, power, health, complaints] : cases) {
        SCOPED_TRACE(what);
        SysfsTree tree;
        healthy(tree).supply("BAT0", changed);
        RecordingLog log;
        PowerSupplyReader reader(tree.sysfs, log);
        reader.read();
        const auto reading = reader.read();
        ASSERT_EQ(reading.batteries.size(), 1U);
        const auto& battery = reading.batteries.front();
        EXPECT_DOUBLE_EQ(battery.percentage.value_or(none), percentage);
        EXPECT_NEAR(battery.energyNow.value_or(none), energyNow, 1e-9);
        EXPECT_DOUBLE_EQ(battery.power.value_or(none), power);
        EXPECT_DOUBLE_EQ(battery.health.value_or(none), health);
        EXPECT_EQ(log.count(), complaints) << "one line a cause, however often it is read";
    }
}

TEST(PowerSupplyReader, ReadsAllElseWhereOneFileCannotBeRead)
{
    for (const auto* broken :
         {"scope", "present", "status", "capacity", "energy_now", "power_now", "cycle_count"}) {
        SCOPED_TRACE(broken);
        SysfsTree tree;
        healthy(tree).breakFile(std::string("class/power_supply/BAT0/") + broken);
        tree.supply("BAT1", {{"type", "Battery"}, {"capacity", "50"}})
            .supply("AC", {{"type", "Mains"}, {"online", "0"}});
        tree.breakFile("class/power_supply/USB/type");
        RecordingLog log;
        PowerSupplyReader reader(tree.sysfs, log);
        for (int i = 0; i < 3; ++i) reader.read();
        const auto reading = reader.read();
        ASSERT_EQ(reading.batteries.size(), 2U);
        EXPECT_NEAR(reading.batteries[0].percentage.value_or(-1), 62, 0.5);
        EXPECT_EQ(reading.batteries[1].percentage, 50);
        EXPECT_FALSE(reading.isExternallyPowered);
        EXPECT_EQ(log.count(), 2U);
        EXPECT_EQ(log.count(broken), 1U);
    }
}

TEST(PowerSupplyReader, KnowsPowerFromOutside)
{
    const Attributes off = {{"type", "Mains"}, {"online", "0"}}, on = {{"type", "Mains"}, {"online", "1"}};
    const Attributes programmable = {{"type", "USB"}, {"online", "2"}}, silent = {{"type", "Mains"}};
    const Attributes dock = {{"type", "Mains"}, {"scope", "Device"}, {"online", "1"}};
    const Attributes charging = {{"type", "Battery"}, {"status", "Charging"}, {"online", "1"}};
    const Attributes giving = {{"type", "Battery"}, {"status", "Discharging"}};
    const Attributes held = {{"type", "Battery"}, {"status", "Not charging"}};
    const Attributes wordless = {{"type", "Battery"}, {"power_now", "-5000000"}};
    const std::tuple<const char*, std::map<std::string, Attributes>, bool> cases[] = {
        {"nothing at all", {}, true},
        {"the battery's own online says nothing", {{"AC", off}, {"BAT0", charging}}, false},
        {"a charger too weak", {{"AC", on}, {"BAT0", giving}}, true},
        {"a port that claims to, and all else does not",
         {{"AC", off}, {"P", programmable}, {"BAT0", giving}},
         false},
        {"one of two ports, programmable", {{"AC", off}, {"P", programmable}, {"BAT0", held}}, true},
        {"a port alone, too weak", {{"P", programmable}, {"BAT0", giving}}, true},
        {"a pad's dock is not the laptop's", {{"D", dock}, {"BAT0", giving}}, false},
        {"a charger that does not tell", {{"AC", silent}, {"BAT0", giving}}, false},
        {"batteries alone, one gives", {{"BAT0", charging}, {"BAT1", giving}}, false},
        {"a battery alone, held", {{"BAT0", held}}, true},
        {"a battery alone, silent and giving", {{"BAT0", wordless}}, false},
    };
    for (const auto& [what, supplies, isPowered] : cases) {
        SysfsTree tree;
        for (const auto& [name, attributes] : supplies) tree.supply(name, attributes);
        RecordingLog log;
        EXPECT_EQ(PowerSupplyReader(tree.sysfs, log).read().isExternallyPowered, isPowered) << what;
    }
}

TEST(PowerSupplyReader, TakesOnlyTheLaptopsOwnBatteries)
{
    SysfsTree tree;
    tree.supply("BAT1", {{"type", "Battery"}, {"scope", "System"}})
        .supply("BATC", {{"type", "Battery "}})
        .supply("BAT3", {{"type", "Battery"}, {"present", "0"}})
        .supply("hid-1", {{"type", "Battery"}, {"scope", "Device"}})
        .supply("UPS", {{"type", "UPS"}})
        .supply("gone", {});
    std::filesystem::create_symlink("nowhere", tree.folder.path() / "class/power_supply/BAT9");
    RecordingLog log;
    PowerSupplyReader reader(tree.sysfs, log);
    const auto batteries = reader.read().batteries;
    ASSERT_EQ(batteries.size(), 2U);
    EXPECT_EQ(batteries[0].name + batteries[1].name, "BAT1BATC");
    EXPECT_EQ(log.count(), 0U);
}

TEST(PowerSupplyReader, TellsMakeVoltageAndTemperatureWhereTheyCanBeBelieved)
{
    constexpr double none = -999;
    const std::tuple<Attributes, double, double, std::string, unsigned> cases[] = {
        {{{"voltage_now", "11900000"}, {"temp", "312"}, {"manufacturer", " SMP "}}, 11.9, 31.2, "SMP", 0},
        {{{"temp", "-55"}}, none, -5.5, "", 0},
        {{{"voltage_now", "0"}, {"temp", "0"}}, none, none, "", 0},
        {{{"temp", "-2731"}}, none, none, "", 1},
        {{{"manufacturer", " \x01 "}}, none, none, "", 0},
        {{{"manufacturer", "A\xff\x1bZ"}}, none, none, "A? Z", 0},
    };
    for (const auto& [added, voltage, temperature, maker, complaints] : cases) {
        SCOPED_TRACE(testing::PrintToString(added));
        SysfsTree tree;
        healthy(tree).supply("BAT0", added);
        RecordingLog log;
        const auto reading = PowerSupplyReader(tree.sysfs, log).read();
        ASSERT_EQ(reading.batteries.size(), 1U);
        EXPECT_DOUBLE_EQ(reading.batteries.front().voltage.value_or(none), voltage);
        EXPECT_DOUBLE_EQ(reading.batteries.front().temperature.value_or(none), temperature);
        EXPECT_EQ(reading.batteries.front().manufacturer.value_or(""), maker);
        EXPECT_EQ(log.count(), complaints);
    }
}

TEST(PowerSupplyReader, KnowsAGaugesWordsForUnknown)
{
    const std::tuple<const char*, const char*, std::optional<std::chrono::seconds>> cases[] = {
        {"5400", "600", std::chrono::seconds(5400)},   {"0", "600", std::chrono::seconds(600)},
        {"65535", "600", std::chrono::seconds(600)},   {"3932100", "65535", {}},
        {"259200", "0", std::chrono::seconds(259200)}, {"259201", "-1", {}},
    };
    for (const auto& [now, average, time] : cases) {
        SysfsTree tree;
        healthy(tree).supply(
            "BAT0", {{"power_now", "0"}, {"time_to_empty_now", now}, {"time_to_empty_avg", average}});
        RecordingLog log;
        EXPECT_EQ(PowerSupplyReader(tree.sysfs, log).read().batteries.at(0).timeToEmpty, time) << now;
    }
}

TEST(PowerSupplyReader, FindsALimitThatIsOnOrOff)
{
    const std::string types = "class/power_supply/BAT0/charge_types";
    const std::string mode = "bus/platform/drivers/ideapad_acpi/VPC2004:00/conservation_mode";
    const std::string end = "class/power_supply/BAT0/charge_control_end_threshold";
    using Files = std::vector<std::pair<std::string, std::string>>;
    const std::tuple<const char*, Files, std::string, std::optional<bool>, unsigned> cases[] = {
        {"none", {}, "", {}, 0},
        {"on", {{types, "Fast Standard [Long_Life]\n"}}, types, true, 0},
        {"off", {{types, "[Fast] Standard Long_Life\n"}}, types, false, 0},
        {"no choice shown", {{types, "Standard Long_Life\n"}}, types, {}, 0},
        {"types without such a limit", {{types, "Trickle [Standard] Custom\n"}}, "", {}, 0},
        {"a limit that cannot be left", {{types, "[Long_Life]\n"}}, "", {}, 0},
        {"words that only resemble it", {{types, "[Standard] Long_Lifetime XLong_Life\n"}}, "", {}, 0},
        {"no text", {{types, std::string("\0\xff[[Long_Life", 13)}}, "", {}, 0},
        {"a page and more", {{types, "[Standard] Long_Life " + std::string(5000, 'x')}}, "", {}, 0},
        {"the switch on", {{mode, "1\n"}}, mode, true, 0},
        {"the switch off", {{mode, "0\n"}}, mode, false, 0},
        {"the switch neither", {{mode, "2\n"}}, mode, {}, 1},
        {"the switch broken", {{mode, std::string(5000, '1')}}, mode, {}, 1},
        {"both", {{mode, "1\n"}, {types, "[Standard] Long_Life\n"}}, types, false, 0},
        {"thresholds beside it", {{mode, "1\n"}, {end, "80\n"}}, "", {}, 0},
    };
    for (const auto& [what, files, file, isOn, complaints] : cases) {
        SCOPED_TRACE(what);
        SysfsTree tree;
        healthy(tree);
        for (const auto& [path, text] : files) tree.folder.write(path, text);
        RecordingLog log;
        const auto charge = PowerSupplyReader(tree.sysfs, log).read().batteries.at(0).charge;
        EXPECT_EQ(charge.fixed.value_or(FixedLimiter{}).file, file);
        EXPECT_EQ(charge.fixed.value_or(FixedLimiter{}).isOn, isOn);
        EXPECT_EQ(log.count(), complaints);
    }
}

TEST(MachineBattery, IsAllBatteriesTogether)
{
    using Status = SupplyStatus;
    const auto battery = [](Status status, double percentage, double full, double rate) {
        BatteryReading one;
        one.status = status;
        one.percentage = percentage;
        one.energyFull = full;
        one.energyNow = full * percentage / 100;
        one.rate = rate;
        return one;
    };
    const auto giving = battery(Status::discharging, 50, 60, -8);
    const auto full = battery(Status::full, 100, 20, 0);

    const auto onBattery = MachineBattery::of({battery(Status::unknown, 100, 20, 0), giving});
    EXPECT_DOUBLE_EQ(onBattery->percentage, 62.5);
    EXPECT_EQ(onBattery->energyNow, 50);
    EXPECT_EQ(onBattery->rate, -8);
    EXPECT_TRUE(onBattery->isDischarging);

    const auto charging = MachineBattery::of({full, battery(Status::charging, 50, 60, 30)});
    EXPECT_TRUE(charging->isCharging);
    EXPECT_FALSE(charging->isFull);
    EXPECT_TRUE(MachineBattery::of({full, full})->isFull);
    for (double wattHours = 10; wattHours < 90; wattHours += 0.7) {
        const auto other = battery(Status::full, 100, wattHours, 0);
        EXPECT_LE(MachineBattery::of({full, other})->percentage, 100) << wattHours;
    }

    const BatteryReading silent;
    EXPECT_EQ(MachineBattery::of({silent}), std::nullopt);
    auto unweighable = battery(Status::unknown, 0, 0, 0);
    unweighable.energyFull.reset();
    for (const auto& other : {silent, unweighable}) {
        const auto both = MachineBattery::of({other, giving});
        EXPECT_EQ(both->percentage, 50) << "what does not tell its size weighs nothing";
        EXPECT_EQ(both->energyNow, 30);
    }
    auto mute = giving;
    mute.energyNow.reset();
    EXPECT_EQ(MachineBattery::of({mute, giving})->energyNow, std::nullopt) << "half would be told as all";
    const auto twin = battery(Status::discharging, 70, 47.52, -8);
    EXPECT_EQ(MachineBattery::of({twin, twin})->percentage, 70);
}

} // namespace
} // namespace velmora
