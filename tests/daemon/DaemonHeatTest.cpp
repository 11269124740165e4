// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "DaemonFixture.h"
#include "ThresholdsReturn.h"

namespace velmora {
namespace {

/// A battery that is charging, and has a sensor.
struct DaemonHeatTest : DaemonTest {
    DaemonHeatTest()
    {
        warm("30.0");
        happened();
    }

    /// Shows this many degrees from now on, for that long.
    void warm(const std::string& celsius, std::chrono::milliseconds time = 0ms)
    {
        std::string tenths = celsius;
        std::erase(tenths, '.');
        supply("BAT0", {{"temp", tenths}});
        look();
        loop->advance(time);
    }

    /// The firmware follows its threshold.
    void stops(int level = 60) { battery(level, "Not charging"); }

    std::string mode() { return daemon->charger().mode; }

    std::string saved() { return folder.read("settings.json"); }

    void expectPaused(int level = 60)
    {
        EXPECT_EQ(mode(), "paused for heat");
        EXPECT_EQ(std::pair(start(), end()), std::pair(0, level));
        EXPECT_FALSE(daemon->charger().isChargingAllowed);
    }
    void expectOrdinary(const std::string& expected = "auto-protect", int limit = 80)
    {
        EXPECT_EQ(mode(), expected);
        EXPECT_EQ(end(), limit);
    }
};

TEST_F(DaemonHeatTest, ChargingWaitsForABatteryThatIsHotForFiveMinutesUntilItIsCool)
{
    EXPECT_TRUE(daemon->charger().canPauseForHeat);
    heat(99); // the processor's zone, which does not matter
    warm("44.9", 10min);
    warm("46.0", 4min);
    warm("44.9", 1min);
    warm("46.0", 4min);
    expectOrdinary();
    loop->advance(2min);
    expectPaused();
    EXPECT_EQ(happened(), "") << "it still charges";
    stops();
    EXPECT_EQ(happened(), "thermal pause. ");
    EXPECT_TRUE(isSleepDelayed);
    warm("40.0", 1h);
    expectPaused();
    warm("39.9");
    expectOrdinary();
    EXPECT_FALSE(isSleepDelayed);
    EXPECT_EQ(saved().find("\"isPausedForHeat\": true"), std::string::npos);
    battery(61, "Charging");
    warm("47.0", 7min);
    stops(61);
    EXPECT_EQ(happened(), "thermal pause. ") << "again";
}

TEST_F(DaemonHeatTest, NotInAPersonsQuickChargeNorBelowThirtyPercentNorOverAPersonsPause)
{
    change({.isTemporaryOverride = true});
    warm("46.0", 10min);
    expectOrdinary("quick charge", 100);
    takeBack();
    look();
    expectPaused();
    change({.isTemporaryOverride = true});
    expectOrdinary("quick charge", 100);
    takeBack();
    EXPECT_EQ(beginTravelCharge(), false) << "not in the middle of a pause";
    warm("39.0");
    EXPECT_EQ(beginTravelCharge(), true);
    warm("46.0", 7min);
    EXPECT_EQ(beginTravelCharge(), false);
    expectPaused();
    for (int i = 0; i < 10; ++i) { // as firmware that holds a threshold
        battery(60, "Full");
        loop->advance(1min);
    }
    EXPECT_EQ(happened(), "thermal pause. ");
    stops(99); // nor does its level mean that the charge was completed
    loop->advance(10min);
    EXPECT_EQ(happened(), "");
    warm("39.0");
    expectOrdinary("quick charge", 100);
    battery(60, "Charging");

    takeBack();
    warm("46.0", 7min);
    expectPaused();
    EXPECT_EQ(toggle(0, ChargingCommand::pause), false);
    EXPECT_EQ(mode(), "paused");
    warm("39.0");
    EXPECT_EQ(beginTravelCharge(), false);
    EXPECT_EQ(mode(), "paused") << "what a person paused stays so";
    toggle(0, ChargingCommand::resume);
    expectOrdinary();

    warm("46.0");
    battery(29, "Charging");
    loop->advance(10min);
    expectOrdinary();
    battery(30, "Charging");
    expectPaused(30);
    battery(29, "Discharging");
    expectOrdinary();
    battery(31, "Charging");
    expectOrdinary();
    battery(35, "Charging");
    expectPaused(35);
    change({.customChargeLimit = 32});
    EXPECT_EQ(end(), 32) << "a limit below it counts";
}

TEST_F(DaemonHeatTest, WhatASensorCannotMeanAndWhatNobodySawIsNoHeat)
{
    for (int i = 0; i < 10; ++i) {
        warm("46.0", 1min);
        warm(i % 2 ? "20.0" : "-273.1", 2s); // a glitch, or nothing
    }
    expectPaused();
    warm("20.0", 2min);
    expectOrdinary(); // twice is the truth
    warm("46.0", 4min);
    hardware.inlineWork = false; // asleep
    loop->advance(1h);
    hardware.inlineWork = true;
    while (hardware.run() || loop->runPosted()) {
    }
    daemon->resumed();
    settle();
    expectOrdinary(); // nobody knows how hot it was meanwhile
    loop->advance(6min);
    expectPaused();
    for (const auto* nonsense : {"0", "150.0", "-273.1", ""}) {
        warm("46.0", 7min);
        expectPaused();
        warm(nonsense, 7min);
        expectOrdinary();
        EXPECT_FALSE(daemon->charger().canPauseForHeat) << nonsense;
    }
}

TEST_F(DaemonHeatTest, WhereTheChargerCannotStopThereIsNeitherPauseNorEvent)
{
    supply("BAT0", {{"capacity", "63"}});
    folder.write("module/lg_laptop/refcnt", "1\n"); // which takes 80 and 100
    boot();
    warm("46.0", 20min);
    expectOrdinary();
    EXPECT_EQ(happened(), "");
    EXPECT_EQ(log.count("although the battery is hot"), 1U);
    std::filesystem::remove(folder.path() / startFile);
    std::filesystem::rename(folder.path() / "module/lg_laptop", folder.path() / "module/fujitsu_laptop");
    battery(45, "Charging"); // takes no end below 50
    boot();
    warm("46.0", 20min);
    expectOrdinary();
    battery(49, "Charging");
    expectOrdinary();
    battery(50, "Charging");
    EXPECT_EQ(mode(), "paused for heat") << "from where it can";
    EXPECT_EQ(end(), 50);
    std::filesystem::remove(folder.path() / endFile);
    boot();
    warm("46.0", 20min);
    EXPECT_FALSE(daemon->charger().canPauseForHeat);
    EXPECT_EQ(mode(), "auto-protect");
}

TEST_F(DaemonHeatTest, NoPauseOutlivesASleepTheEndOfTheDaemonOrACrash)
{
    const auto thermalPauses = [this] {
        stops();
        battery(60, "Charging");
        warm("46.0", 7min);
        expectPaused();
        stops();
    };
    thermalPauses();
    bool isReady = false;
    daemon->goToSleep([&] { isReady = true; });
    settle();
    EXPECT_TRUE(isReady);
    EXPECT_EQ(end(), 80);
    look();
    EXPECT_EQ(end(), 80) << "not in the last moment either";
    daemon->resumed();
    battery(60, "Charging");
    settle();
    expectPaused(); // it is as hot
    stops();
    EXPECT_EQ(happened(), "thermal pause. ") << "of which everybody knows";
    daemon->goToSleep([] {});
    loop->advance(2min);
    battery(60, "Charging"); // awake, though nobody said so
    expectPaused();
    stops();

    EXPECT_TRUE(daemon->endHeatPause());
    EXPECT_EQ(end(), 80);
    warm("30.0", 1min);
    EXPECT_FALSE(daemon->endHeatPause());

    thermalPauses();
    daemon.reset(); // a crash
    EXPECT_EQ(end(), 60);
    EXPECT_TRUE(liftHeatPause(Sysfs(folder.path()), *settings, log));
    EXPECT_EQ(end(), 80);
    hold(0, 60);
    EXPECT_TRUE(liftHeatPause(Sysfs(folder.path()), *settings, log));
    EXPECT_EQ(end(), 60) << "which is somebody else's by now";

    boot();
    thermalPauses();
    boot(); // a crash, and no other help
    EXPECT_EQ(end(), 80);
    EXPECT_EQ(saved().find("\"isPausedForHeat\": true"), std::string::npos);

    battery(60, "Charging");
    std::filesystem::create_directory(folder.path() / "settings.json.new"); // a disk that takes nothing
    warm("46.0", 7min);
    expectOrdinary();
    EXPECT_EQ(log.count("a note of it cannot be saved"), 1U);
}

} // namespace
} // namespace velmora
