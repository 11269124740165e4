// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/PowerSupplyMonitor.h"

#include "LoopTest.h"
#include "RecordingLog.h"
#include "SysfsTree.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

struct PowerSupplyMonitorTest : LoopTest {
    static constexpr auto never = 24h;

    SysfsTree tree{"asus-ac0"};
    RecordingLog log;
    int told = 0;

    fs::path supply(const std::string& name) const
    {
        return tree.folder.path() / "class/power_supply" / name;
    }

    void plug(const char* battery) { tree.supply(battery, {{"type", "Battery"}}); }
    void touch(const char* battery) { tree.supply(battery, {{"uevent", "again"}}); }

    bool isTold(int count)
    {
        return eventually([&] { return told >= count; });
    }

    /// Serves what is due and nothing that is to come.
    void drain()
    {
        while (loop.runOnce(0ms)) {
        }
    }
};

TEST_F(PowerSupplyMonitorTest, HearsOfEveryWayToChangeTheTree)
{
    PowerSupplyMonitor monitor(loop, tree.sysfs, log, never, 0ms);
    const auto observing = monitor.observe([this](auto) { ++told; });
    const auto renameIntoPlace = [&] {
        tree.folder.write("next", "again");
        fs::rename(tree.folder.path() / "next", supply("BAT0/uevent"));
    };
    const auto exchange = [&] {
        fs::rename(supply("BAT0"), tree.folder.path() / "aside");
        plug("BAT0");
    };
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"rewritten", [&] { touch("BAT0"); }},
        {"renamed into place", renameIntoPlace},
        {"another battery", [&] { plug("BAT1"); }},
        {"which changes", [&] { touch("BAT1"); }},
        {"and goes", [&] { fs::remove_all(supply("BAT1")); }},
        {"another in its place", exchange},
        {"which changes, too", [&] { touch("BAT0"); }},
        {"the class goes", [&] { fs::remove_all(tree.folder.path() / "class"); }},
        {"and comes back", [&] { plug("BAT0"); }},
        {"to change", [&] { touch("BAT0"); }},
    };
    for (const auto& [what, change] : ways) {
        drain();
        const int before = told;
        change();
        EXPECT_TRUE(isTold(before + 1)) << what;
    }
    EXPECT_EQ(log.count(), 0U);
}

TEST_F(PowerSupplyMonitorTest, TellsOnceOfWhatComesTogetherAndPassesOverTheRest)
{
    PowerSupplyMonitor monitor(loop, tree.sysfs, log, never, never);
    const auto observing = monitor.observe([this](auto) { ++told; });
    tree.supply("BAT0", {{"capacity", "12"}, {"status", "Full"}});
    drain();
    EXPECT_EQ(told, 0) << "an attribute alone is no event";
    tree.supply("BAT0", {{"uevent", "1"}}).supply("AC0", {{"uevent", "2"}}).supply("BAT0", {{"uevent", "3"}});
    drain();
    EXPECT_EQ(told, 1);
    for (int flood = 0; flood < 5; ++flood) {
        tree.supply("BAT0", {{"uevent", "again"}});
        drain();
    }
    EXPECT_EQ(told, 1) << "not one look an event";
}

TEST_F(PowerSupplyMonitorTest, TellsInTheEndOfWhatHappenedInThePause)
{
    PowerSupplyMonitor monitor(loop, tree.sysfs, log, never, 50ms);
    const auto observing = monitor.observe([this](auto) { ++told; });
    for (const int time : {1, 2}) {
        tree.supply("BAT0", {{"uevent", "again"}});
        EXPECT_TRUE(isTold(time));
    }
}

TEST_F(PowerSupplyMonitorTest, LooksASecondTimeWhereFirmwareLags)
{
    PowerSupplyMonitor monitor(loop, tree.sysfs, log, 1ms);
    const auto observing = monitor.observe([this](auto) { ++told; });
    tree.supply("BAT0", {{"uevent", "again"}});
    EXPECT_TRUE(isTold(2));
    drain();
    EXPECT_EQ(told, 2) << "and not for ever";
}

TEST_F(PowerSupplyMonitorTest, WaitsForATreeThatIsNotThereYet)
{
    const auto folder = tree.folder.path() / "later";
    PowerSupplyMonitor monitor(loop, Sysfs(folder / "below/sys"), log, never, 0ms);
    const auto observing = monitor.observe([this](auto) { ++told; });
    EXPECT_EQ(log.count("Cannot monitor"), 1U);
    fs::create_directories(folder / "below");
    drain();
    EXPECT_EQ(told, 0);
    fs::rename(tree.folder.path() / "class", folder / "class");
    fs::create_directories(folder / "below/sys");
    fs::rename(folder / "class", folder / "below/sys/class");
    EXPECT_TRUE(isTold(1));
    drain();
    const int before = told;
    tree.folder.write(folder / "below/sys/class/power_supply/BAT0/uevent", "again");
    EXPECT_TRUE(isTold(before + 1));
    EXPECT_EQ(log.count(), 1U);
}

} // namespace
} // namespace velmora
