// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ManualLoop.h"
#include "RecordingLog.h"
#include "base/Observable.h"
#include "battery/BatteryDataSource.h"
#include "platform/Complaints.h"
#include "platform/LogBudget.h"
#include "wire/VelmoraProtocol.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace velmora {
namespace {

using namespace std::chrono_literals;

TEST(LogBudget, EndsWithTheTruthHoweverManyWereLeftOut)
{
    const auto loop = std::make_shared<ManualLoop>();
    const ManualClock clock(loop);
    RecordingLog log;
    LogBudget budget(*loop, log, clock, "test", 2);
    loop->advance(20s);
    for (int limit = 90; limit > 79; --limit) budget.info(std::to_string(limit) + " %");
    EXPECT_EQ(log.count(), 2U);
    loop->advance(1min);
    EXPECT_EQ(log.count(), 3U);
    EXPECT_EQ(log.count("80 % (8 like it left out before)"), 1U);

    budget.info("70 %");
    loop->advance(1h);
    EXPECT_EQ(log.count(), 4U);
    EXPECT_EQ(log.count("70 %"), 1U);
    EXPECT_EQ(loop->pendingTimers(), 0U);
}

TEST(Complaints, SayOnceThatThereAreTooMany)
{
    RecordingLog log;
    Complaints complaints(log, "test", 2);
    for (const auto* cause : {"one", "two", "three", "four", "one"}) complaints.raise(cause, cause);
    EXPECT_EQ(log.count(), 3U);
    EXPECT_EQ(log.count("further ones are not logged"), 1U);
    complaints.settle("two");
    EXPECT_TRUE(complaints.raise("four", "four"));
    EXPECT_FALSE(complaints.raise("five", "five"));
    EXPECT_EQ(log.count("further ones are not logged"), 2U);
}

TEST(Observable, EveryAssignmentIsToldInOrderAndBeforeItIsStored)
{
    std::string told;
    Signal<> willChange;
    Observable<int>* self = nullptr;
    Observable<int> value{1, &willChange, [&] { told += "set:" + std::to_string(self->get()) + " "; }};
    self = &value;
    const auto model = willChange.observe([&] { told += "will "; });
    const auto one = value.observe(
        [&](int incoming) { told += std::to_string(value.get()) + "->" + std::to_string(incoming) + " "; });
    value.set(2);
    value.set(2);
    EXPECT_EQ(told, "will 1->2 set:2 will 2->2 set:2 ");
}

TEST(Observable, ObserversMayComeGoAndAssignInsideACall)
{
    std::string told;
    Observable<int> value{0};
    Subscription late;
    Subscription second;
    Subscription first = value.observe([&](int incoming) {
        told += "first ";
        first = nullptr;
        second = nullptr; // it must not be called any more, though it was there when the telling began
        late = value.observe([&](int) { told += "late "; });
        if (incoming == 1) value.set(7);
    });
    second = value.observe([&](int) { told += "second "; });
    value.set(1);
    EXPECT_EQ(told, "first late ");
    EXPECT_EQ(value.get(), 1);
}

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
