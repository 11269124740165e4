// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/LinuxThermalLevel.h"

#include "RecordingLog.h"
#include "SysfsTree.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

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

} // namespace
} // namespace velmora
