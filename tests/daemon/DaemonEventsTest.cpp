// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "DaemonFixture.h"

namespace velmora {
namespace {

/// What the daemon tells of charging, each thing once.
struct DaemonEventsTest : DaemonTest {
    DaemonEventsTest()
    {
        change({.customHysteresis = 5});
        supply("BAT0", {{"cycle_count", "210"}});
        look();
        happened();
    }

    /// Looks at this until everything that is due has come.
    std::string at(int level, const char* status, bool plugged = true)
    {
        battery(level, status, plugged);
        loop->advance(10s);
        return happened();
    }

    void restart()
    {
        daemon->save();
        boot();
        loop->advance(10s);
    }
};

TEST_F(DaemonEventsTest, ALimitPausesAChargeOnceAndResumesItOnce)
{
    EXPECT_EQ(at(79, "Charging"), "");
    EXPECT_EQ(at(80, "Not charging"), "charging paused. ");
    for (const auto* status : {"Charging", "Not charging", "Charging", "Full", "Discharging", "Not charging"})
        EXPECT_EQ(at(79, status), "") << status;
    restart();
    EXPECT_EQ(happened(), "");
    EXPECT_EQ(at(74, "Charging"), "charging resumed. ") << "over a restart";
    restart();
    EXPECT_EQ(at(79, "Charging"), "");
    EXPECT_EQ(at(80, "Full"), "charging paused. ");
    change({.customChargeLimit = 90, .customHysteresis = 5});
    EXPECT_EQ(at(81, "Charging"), "") << "the person who moved the limit knows";
    change({.isTemporaryOverride = true, .customChargeLimit = 90, .customHysteresis = 5});
    EXPECT_EQ(at(95, "Charging"), "");
    EXPECT_EQ(at(100, "Full"), "override completed. ") << "and no pause: it is full";
    EXPECT_EQ(at(100, "Not charging"), "");
}

TEST_F(DaemonEventsTest, AFirmwaresOwnLimitStopsWhereItLikes)
{
    daemon.reset();
    for (const auto* file : {startFile, endFile, "settings.json"})
        std::filesystem::remove(folder.path() / file);
    folder.write("bus/platform/drivers/ideapad_acpi/VPC2004:00/conservation_mode", "1\n");
    boot();
    EXPECT_EQ(at(54, "Charging"), "");
    EXPECT_EQ(at(58, "Charging"), "");
    EXPECT_EQ(at(58, "Not charging"), "charging paused. ");
    EXPECT_EQ(at(57, "Charging"), "");
    EXPECT_EQ(at(54, "Charging"), "charging resumed. ");
}

TEST_F(DaemonEventsTest, WhatAPersonDoesOrNoLimitDidIsNoPause)
{
    toggle();
    EXPECT_EQ(at(60, "Not charging"), "") << "paused by hand";
    toggle();
    EXPECT_EQ(at(60, "Charging"), "");
    change({.isTemporaryOverride = true, .customHysteresis = 5});
    EXPECT_EQ(at(85, "Charging"), "");
    takeBack();
    EXPECT_EQ(at(85, "Not charging"), "") << "a quick charge that was taken back is not completed";
    change({.isTemporaryOverride = true, .customHysteresis = 5});
    at(85, "Discharging", false);
    loop->advance(2min);
    EXPECT_EQ(happened(), "") << "nor is one that was unplugged";
    at(85, "Not charging");
    change({.isAppleRecommendedMode = false, .customHysteresis = 5});
    EXPECT_EQ(at(87, "Charging"), "");
    EXPECT_EQ(at(100, "Full"), "") << "full";
}

TEST_F(DaemonEventsTest, APlugIsToldOnceItStaysAndComparedWithWhatWasTold)
{
    for (int i = 0; i < 8; ++i) {
        battery(60, i % 2 ? "Charging" : "Discharging", i % 2);
        loop->advance(1s);
    }
    loop->advance(10s);
    EXPECT_EQ(happened(), "") << "it bounced";
    battery(60, "Discharging", false);
    loop->advance(2s);
    EXPECT_EQ(happened(), "");
    restart();
    EXPECT_EQ(happened(), "power source changed Battery. ") << "nobody was told before the restart";
    restart();
    EXPECT_EQ(happened(), "");
    EXPECT_EQ(at(60, "Charging"), "power source changed AC. ");

    EXPECT_EQ(at(60, "Discharging", false), "power source changed Battery. ");
    daemon->save();
    battery(60, "Charging");
    happened();
    boot();
    daemon->meetBus("after a reboot");
    loop->advance(10s);
    EXPECT_EQ(happened(), "") << "what was before a boot is no news";
}

TEST_F(DaemonEventsTest, EachPointIsLostOnce)
{
    at(22, "Charging");
    EXPECT_EQ(at(21, "Discharging", false), "level lost 21. power source changed Battery. ");
    EXPECT_EQ(at(20, "Discharging", false), "level lost 20. ");
    for (const int level : {21, 20, 21, 20}) EXPECT_EQ(at(level, "Discharging", false), "");
    supply("BAT0", {{"capacity", ""}});
    look();
    EXPECT_EQ(at(20, "Discharging", false), "") << "firmware has such moments";
    restart();
    EXPECT_EQ(happened(), "");
    EXPECT_EQ(at(17, "Discharging", false), "level lost 19. level lost 18. level lost 17. ") << "asleep";
    EXPECT_EQ(at(30, "Charging"), "power source changed AC. ");
    EXPECT_EQ(at(29, "Discharging"), "level lost 29. ") << "a charger that is too weak";
    EXPECT_EQ(at(28, "Not charging"), "");
}

TEST_F(DaemonEventsTest, ACycleIsOneMoreAndAnotherBatteryIsNone)
{
    const auto count = [this](const std::string& value) {
        supply("BAT0", {{"cycle_count", value}});
        look();
        return happened();
    };
    EXPECT_EQ(count("211"), "cycle completed 211. ");
    EXPECT_EQ(count("0"), "") << "a gauge that does not know";
    restart();
    EXPECT_EQ(count("211"), "");
    EXPECT_EQ(count("15"), "");
    EXPECT_EQ(count("17"), "");
    daemon->save();
    supply("BAT0", {{"cycle_count", "18"}}); // firmware that counts while the machine is off
    boot();
    EXPECT_EQ(happened(), "cycle completed 18. ");
}

} // namespace
} // namespace velmora
