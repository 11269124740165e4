// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/TimeEstimator.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

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
    const struct {
        const char* what;
        MachineBattery battery;
        std::int64_t toFull, toEmpty;
    } cases[] = {
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
