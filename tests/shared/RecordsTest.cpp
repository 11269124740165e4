// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "battery/BatteryDataSource.h"
#include "wire/VelmoraProtocol.h"

#include <gtest/gtest.h>
#include <limits>

namespace velmora {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(SharedBatteryState, IsIdentifiedByItsDeviceElseByItsLevel)
{
    EXPECT_EQ(SharedBatteryState{.percentage = 80}.id(), "unknown_80.0");
    EXPECT_EQ(SharedBatteryState{.percentage = 100.0 / 3}.id(), "unknown_33.333333333333336");
    EXPECT_EQ((SharedBatteryState{.percentage = 80, .deviceID = ""}.id()), "");
}

TEST(KeyedArchive, WhatIsMissingMistypedOrNotFiniteTakesTheDefault)
{
    KeyedArchive mistyped;
    mistyped.encode("percentage", std::int64_t{80});
    mistyped.encode("isCharging", 1.0);
    mistyped.encode("powerSource", true);
    mistyped.encode("customChargeLimit", nan);
    mistyped.encode("timeToFull", 12.0);
    mistyped.encode("timestamp", nan);
    mistyped.encode("health", std::numeric_limits<double>::infinity());
    const HSBatteryState blank(0, false, "Unknown", "Nominal", 0, 0, 0, 0, false);
    const Date now{123};
    for (const auto& archive : {KeyedArchive{}, mistyped}) {
        EXPECT_EQ(HSBatteryState(archive), blank);
        EXPECT_EQ(HSHistorySnapshot(archive, now), HSHistorySnapshot(now, 0, 0, "Nominal", false));
    }
}

} // namespace

} // namespace velmora
