// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/LogBudget.h"

#include "ManualClock.h"
#include "RecordingLog.h"
#include "platform/Complaints.h"

#include <gtest/gtest.h>

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

} // namespace
} // namespace velmora
