// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopPast.h"

#include "LaptopKinds.h"
#include "TemporaryFolder.h"
#include "history/HistoryCodec.h"
#include "history/HistoryTrends.h"

#include <fstream>
#include <gtest/gtest.h>

namespace velmora {

namespace {

constexpr Date now{827'000'000};

TEST(LaptopPast, IsTwoMonthsThatADaemonWouldHaveKept)
{
    const auto samples = past::lived(*laptopOfKind("thresholds"), now, 3600);
    ASSERT_GT(samples.size(), 500U);
    ASSERT_LE(samples.size(), history_limits::maximumLength);
    for (std::size_t index = 1; index < samples.size(); ++index)
        ASSERT_TRUE(isWorthKeeping(&samples[index - 1], samples[index])) << index;

    const auto fit = trends::fit(samples);
    ASSERT_TRUE(fit);
    EXPECT_NEAR(fit->perMonth, -1, 0.3);
    EXPECT_NEAR(fit->at(now), 96, 0.5); // what such a laptop's battery holds now

    EXPECT_TRUE(past::lived(*laptopOfKind("none"), now, 0).empty());
}

struct RecordedPast : testing::Test {
    past::Samples read(const std::string& text) const
    {
        const auto file = folder.path() / "past";
        std::ofstream(file) << text;
        return past::recorded(file, now);
    }
    TemporaryFolder folder;
};

TEST_F(RecordedPast, EndsAQuarterOfAnHourAgo)
{
    using duration::day;
    const Date last = now + -900.0;
    const past::Samples expected{{last + -29 * day, 97, 90, "Nominal", false},
                                 {last, 42, 89.5, "Nominal", false}};
    const char* const forms[] = {
        "# where from\ndate,cycles,full_mAh,full_min_mAh,design_mAh,level_max\n2020-01-31,1,,,4000,50\n"
        "2020-02-01,2,3600,3500,4000,97\n2020-03-01,3,3580,3400,4000,42\n",
        "start,end,design_mWh,full_mWh,level_max\r\n2020-02-23,2020-03-01,80000,71600,42\r\n"
        "2020-01-25,2020-02-01,80000,72000,97\r\n",
        R"([{"t":0,"p":97,"h":90,"s":"Nominal","c":false},{"t":2505600,"p":42,"h":89.5,"s":"Nominal","c":false}])"};
    for (const char* form : forms) EXPECT_EQ(read(form), expected) << form;
}

TEST_F(RecordedPast, OfABrokenFileThereIsNone)
{
    for (const std::string file :
         {"", "[1]", "date,full_mAh\n2020-02-01,1\n", "date,full_mAh,design_mAh\n2020-02-01,nan,4000\n",
          "date,full_mAh,design_mAh\n2020-02-30,3600,4000\n", "date,full_mAh,design_mAh\n2020-02-01,3600\n",
          "date,full_mAh,design_mAh\n2020-02-01,3600,0\n"})
        EXPECT_THROW(read(file), std::runtime_error) << file;
    EXPECT_THROW(past::recorded(folder.path(), now), std::runtime_error);
}

} // namespace

} // namespace velmora
