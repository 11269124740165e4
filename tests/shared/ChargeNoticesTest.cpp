// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "alerts/ChargeNotices.h"
#include "FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmora {
namespace {

using enum ChargeEvent::Kind;

struct ChargeNoticesTest : testing::Test {
    FakePlatform machine;
    FakeNotificationCenter& center = *machine.notificationCenter;
    NoticeWishes wishes{.onCycle = true};
    bool isActive = true;
    std::unique_ptr<ChargeNotices> notices = start();

    std::unique_ptr<ChargeNotices> start()
    {
        return std::make_unique<ChargeNotices>([this] { return wishes; }, [this] { return isActive; });
    }

    /// How many notices an event makes, long after the last one.
    int after(const ChargeEvent& event)
    {
        machine.loop->advance(NotificationManager::cooldownPeriod);
        const int before = center.delivered();
        notices->take(event);
        machine.settle();
        return center.delivered() - before;
    }
    int at(std::int64_t level) { return after({.kind = levelLost, .level = level}); }
};

TEST_F(ChargeNoticesTest, EachEventIsToldToWhoWantsItWhileTheSessionIsInUse)
{
    const std::tuple<ChargeEvent, bool NoticeWishes::*, std::string> cases[] = {
        {{chargingPaused}, &NoticeWishes::onLimit, "Charging Paused"},
        {{chargingResumed}, &NoticeWishes::onLimit, "Charging Resumed"},
        {{overrideCompleted}, &NoticeWishes::onLimit, "Full Charge Reached"},
        {{thermalPause}, &NoticeWishes::onHeat, "Thermal Protection"},
        {{.kind = powerSourceChanged, .powerSource = "AC"},
         &NoticeWishes::onPowerChange,
         "Your Mac is now running on AC Power."},
        {{.kind = powerSourceChanged, .powerSource = "Battery"},
         &NoticeWishes::onPowerChange,
         "Your Mac is now running on Battery Power."},
        {{.kind = levelLost, .level = 20}, &NoticeWishes::onLowBattery, "Low Battery"},
        {{.kind = cycleCompleted, .cycleCount = 312},
         &NoticeWishes::onCycle,
         "The battery has been through 312 charge cycles."},
    };
    for (const auto& [event, wish, text] : cases) {
        SCOPED_TRACE(text);
        wishes.*wish = false;
        EXPECT_EQ(after(event), 0);
        wishes.*wish = true;
        isActive = false;
        EXPECT_EQ(after(event), 0);
        isActive = true;
        EXPECT_EQ(after(event), 1);
        const auto told = center.standing().back();
        EXPECT_THAT((std::vector{told.title, told.body}), testing::Contains(text));
    }
    EXPECT_EQ(after({.kind = powerSourceChanged, .powerSource = "Windmill"}), 0);
}

TEST_F(ChargeNoticesTest, ALowBatteryIsToldOnceADip)
{
    const std::tuple<std::int64_t, int, const char*> steps[] = {
        {21, 0, "above the limit"},
        {20, 1, "at the limit"},
        {19, 0, "in the same dip"},
        {23, 0, "plugged in for a moment"},
        {18, 0, "which ends no dip"},
        {24, 0, "it had been at 25"},
        {12, 1, "so that this is the next one"},
    };
    for (const auto& [level, expected, why] : steps) EXPECT_EQ(at(level), expected) << level << ": " << why;

    notices->takeLevel(24.9);
    EXPECT_EQ(at(12), 0);
    notices->takeLevel(25);
    EXPECT_EQ(at(12), 1) << "charged, and drained again while nobody looked";
    notices = start();
    EXPECT_EQ(at(11), 0) << "remembered over a restart";
    wishes.lowBatteryLimit = 5;
    EXPECT_EQ(at(10), 0);
    EXPECT_EQ(at(5), 1) << "a limit that was lowered well below the level is a dip of its own";
    wishes.lowBatteryLimit = 100;
    EXPECT_EQ(at(99) + at(98), 1) << "a full charge ends the dip, as no level is 5 points above";
}

TEST_F(ChargeNoticesTest, WhoCouldNotBeToldAtFirstIsToldAtTheNextPoint)
{
    isActive = false;
    EXPECT_EQ(at(20), 0);
    isActive = true;
    EXPECT_EQ(at(19), 1) << "the person has come to this session";

    EXPECT_EQ(at(60), 0);
    wishes.onLowBattery = false;
    EXPECT_EQ(at(20), 0);
    wishes.onLowBattery = true;
    EXPECT_EQ(at(19), 1) << "switched on while below";

    EXPECT_EQ(at(60), 0);
    wishes.lowBatteryLimit = 70;
    EXPECT_EQ(at(59), 1) << "the limit was raised";
}

TEST_F(ChargeNoticesTest, ADipThatNobodySawIsToldAtTheNextPoint)
{
    center.deliveryError = "no answer";
    EXPECT_EQ(at(20), 0);
    center.deliveryError.reset();
    notices->take({.kind = levelLost, .level = 19});
    notices->take({.kind = levelLost, .level = 18});
    machine.settle();
    EXPECT_EQ(center.delivered(), 1) << "once, while the desktop is still at it";
    notices->takeLevel(25);
    notices->take({.kind = levelLost, .level = 20});
    machine.settle();
    EXPECT_EQ(center.delivered(), 1) << "so soon after the last one";
    EXPECT_EQ(at(19) + at(18), 1);
}

TEST_F(ChargeNoticesTest, ADipBeforeTheDesktopIsThereIsToldOnceItIs)
{
    FakePlatform logIn;
    logIn.notificationCenter->holdsAnswers = true;
    ChargeNotices early([] { return NoticeWishes{}; }, [] { return true; });
    early.take({.kind = levelLost, .level = 20});
    logIn.settle();
    logIn.notificationCenter->answer();
    early.take({.kind = levelLost, .level = 19});
    EXPECT_EQ(logIn.notificationCenter->delivered(), 1);
}

} // namespace
} // namespace velmora
