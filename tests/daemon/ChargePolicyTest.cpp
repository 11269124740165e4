// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/ChargePolicy.h"
#include "charging/HeldLevel.h"
#include "charging/QuickCharge.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using State = ManualCharging::State;

TEST(ChargePolicy, EachModeHasItsThresholdsAndTheStrongestWins)
{
    using enum ChargeMode;
    const ChargingSettings storing{.isStorageModeEnabled = true};
    const auto limited = [](double limit, double hysteresis) {
        return ChargingSettings{.customChargeLimit = limit, .customHysteresis = hysteresis};
    };
    const std::tuple<const char*, ChargingSettings, ManualCharging, bool, ChargeMode, Thresholds> cases[] = {
        {"Auto-Protect holds the limit", limited(80, 2), {}, false, autoProtect, {78, 80}},
        {"fractions go to the nearest percent", limited(79.6, 4.4), {}, false, autoProtect, {75, 80}},
        {"no hysteresis still leaves a step", limited(60, 0), {}, false, autoProtect, {59, 60}},
        {"the widest band of the lowest limit", limited(20, 20), {}, false, autoProtect, {0, 20}},
        {"storage beats Auto-Protect", storing, {}, false, ChargeMode::storage, {48, 50}},
        {"all off is the hardware's default", {.isAppleRecommendedMode = false}, {}, false, off, {95, 100}},
        {"a pause beats storage", storing, {State::paused, 63}, false, paused, {0, 63}},
        {"resumed by hand charges on", {}, {State::resumed}, false, resumed, {99, 100}},
        {"quick charge beats storage", storing, {}, true, quickCharge, {99, 100}},
        {"a pause beats quick charge", {}, {State::paused, 63}, true, paused, {0, 63}},
    };
    for (const auto& [what, settings, manual, isQuickCharging, mode, wanted] : cases) {
        SCOPED_TRACE(what);
        const auto decision = decideCharging(settings, isQuickCharging, manual, ChargeControl::thresholds);
        EXPECT_EQ(decision.mode, mode);
        EXPECT_EQ(decision.thresholds, wanted);
        const auto endOnly = decideCharging(settings, isQuickCharging, manual, ChargeControl::endThreshold);
        EXPECT_EQ(endOnly.thresholds, (Thresholds{std::nullopt, wanted.end}));
        const auto fixed = decideCharging(settings, isQuickCharging, manual, ChargeControl::fixedLimit);
        EXPECT_EQ(fixed.thresholds, endOnly.thresholds);
        EXPECT_FALSE(decideCharging(settings, isQuickCharging, manual, ChargeControl::none).thresholds);
    }
}

TEST(ChargePolicy, KnowsWhetherChargingIsAllowed)
{
    const auto allowed = [](std::optional<Thresholds> inForce, double level, bool isCharging) {
        return isChargingAllowed(inForce, {.percentage = level, .isCharging = isCharging});
    };
    EXPECT_FALSE(allowed(Thresholds{78, 80}, 80, true)) << "at the end";
    EXPECT_TRUE(allowed(Thresholds{78, 80}, 77.9, false)) << "below the start";
    EXPECT_TRUE(allowed(Thresholds{78, 80}, 79, true)) << "inside the band it goes on charging";
    EXPECT_FALSE(allowed(Thresholds{78, 80}, 79, false)) << "inside the band it goes on holding";
    EXPECT_TRUE(allowed(Thresholds{std::nullopt, 80}, 79, false))
        << "without a start nothing holds below the end";
    EXPECT_TRUE(allowed(Thresholds{95, 100}, 100, false)) << "no limit";
    EXPECT_TRUE(allowed(std::nullopt, 90, false)) << "nothing to limit with";
}

TEST(HeldLevel, IsLearntFromWhatTheBatteryDoesForAWhile)
{
    const auto at = [](double level, bool isCharging, double power, bool plugged = true) {
        return ChargeReading{.percentage = level,
                             .isCharging = isCharging,
                             .hasExternalPower = plugged,
                             .chargingPower = power};
    };
    const std::tuple<const char*, ChargeReading, bool, const char*, const char*> cases[] = {
        {"charges on above the lower level", at(65, true, 20), true, "", "80"},
        {"takes nothing in the band", at(57, false, 0), true, "", "55-60"},
        {"says Charging at no power in the band", at(60, true, 0), true, "", "55-60"},
        {"rests above both", at(85, false, 0), true, "", ""},
        {"rests between the two", at(70, false, 0), true, "", ""},
        {"charges below both", at(50, true, 20), true, "", ""},
        {"is off", at(65, true, 20), false, "", ""},
        {"on battery", at(57, false, -9, false), true, "", ""},
        {"a charger too weak", at(57, false, -3), true, "", ""},
        {"was wrong", at(65, true, 20), true, "55-60", "80"},
        {"no sign leaves what is known", at(70, false, 0), true, "80", "80"},
        {"a file that was tampered with", at(70, false, 0), true, "99", ""},
    };
    for (const auto& [what, reading, isOn, known, learnt] : cases) {
        SCOPED_TRACE(what);
        HeldLevel level(known);
        const std::string before = level.text();
        EXPECT_FALSE(level.observe(isOn, reading, 1h));
        EXPECT_FALSE(level.observe(isOn, at(90, false, 0), 1h + 90s)) << "a break begins the wait anew";
        EXPECT_FALSE(level.observe(isOn, reading, 1h + 2min));
        EXPECT_EQ(level.text(), before);
        EXPECT_EQ(level.observe(isOn, reading, 1h + 4min), learnt != before);
        EXPECT_EQ(level.text(), learnt);
    }
}

struct QuickChargeTest : testing::Test {
    /// Lets `duration` pass in steps of ten seconds, with this reading; returns whether it ended.
    bool pass(std::chrono::milliseconds duration, const ChargeReading& reading)
    {
        bool ended = quick.observe(reading, now).has_value();
        for (const auto until = now + duration; now < until;) {
            now += 10s;
            ended = quick.observe(reading, now).has_value() || ended;
        }
        return ended;
    }

    QuickCharge quick;
    std::chrono::milliseconds now{1h};
    const ChargeReading charging{.percentage = 85, .isCharging = true, .chargingPower = 30};
};

TEST_F(QuickChargeTest, EndsWhenFullOrUnplugged)
{
    const ChargeReading unplugged{.percentage = 85, .hasExternalPower = false};
    const ChargeReading atZero{.percentage = 99, .isCharging = true, .chargingPower = 0};
    const ChargeReading slowly{.percentage = 99, .isCharging = true, .chargingPower = 2};
    const ChargeReading fullAtLimit{.percentage = 80, .isFull = true};
    const std::tuple<const char*, ChargeReading, std::chrono::milliseconds, bool> cases[] = {
        {"charging goes on for hours", charging, 3h, false},
        {"full by its own word", {.percentage = 98, .isFull = true}, 0s, true},
        {"99 without power, not yet two minutes", {.percentage = 99}, 110s, false},
        {"99 without power for two minutes", {.percentage = 99}, 2min, true},
        {"charging at a rate of zero is no power", atZero, 2min, true},
        {"the last percent taken slowly", slowly, 1h, false},
        {"98 without power may go on", {.percentage = 98}, 1h, false},
        {"Full at a limit that firmware holds, just now", fullAtLimit, 110s, false},
        {"Full at a limit that firmware does not leave", fullAtLimit, 2min, true},
        {"unplugged for a minute", unplugged, 1min, false},
        {"unplugged for over a minute", unplugged, 70s, true},
    };
    for (const auto& [what, reading, lasting, ends] : cases) {
        quick = QuickCharge{};
        quick.ask(true);
        EXPECT_EQ(pass(lasting, reading), ends) << what;
    }
}

TEST_F(QuickChargeTest, ABreakStartsTheWaitAnewAndTheEndIsKnownAhead)
{
    const ChargeReading unplugged{.percentage = 85, .hasExternalPower = false};
    quick.ask(true);
    EXPECT_FALSE(quick.due());
    EXPECT_FALSE(pass(50s, unplugged));
    EXPECT_GT(*quick.due(), now);
    EXPECT_FALSE(pass(10s, charging));
    EXPECT_FALSE(quick.due());
    EXPECT_FALSE(pass(50s, unplugged));
    now = *quick.due();
    EXPECT_TRUE(quick.observe(unplugged, now));
}

} // namespace
} // namespace velmora
