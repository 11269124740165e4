// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopKinds.h"
#include "LaptopPast.h"
#include "SimulatedLaptop.h"
#include "TemporaryFolder.h"
#include "ThresholdDriver.h"
#include "history/HistoryCodec.h"
#include "history/HistoryTrends.h"

#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(CapturedLaptop, StandsAsCapturedUntilItMoves)
{
    for (const auto& entry : std::filesystem::directory_iterator(VELMORA_MACHINES)) {
        if (entry.path().extension() != ".sysfs") continue;
        SCOPED_TRACE(entry.path().stem());
        const auto machine = CapturedMachine::load(entry.path());
        const SimulatedLaptop laptop(LaptopMake{.machine = machine});
        for (const auto& [path, text] : machine.values)
            EXPECT_EQ(laptop.load(path).bytes, text + '\n') << path;
        for (const auto& [path, error] : machine.errors) EXPECT_EQ(laptop.load(path).error, error) << path;
    }
}

constexpr auto start = Threshold::start;
constexpr auto end = Threshold::end;

TEST(ThresholdDriver, TakesWritesAsTheKernelsDriversDo)
{
    const struct {
        const char* driver;
        ChargeThresholds held;
        Threshold which;
        const char* text;
        int error;
        ChargeThresholds after;
    } cases[] = {
        {"thinkpad", {75, 80}, end, "90\n", 0, {75, 90}},
        {"thinkpad", {75, 80}, start, "80", 0, {80, 80}},
        {"thinkpad", {75, 80}, start, "81", EINVAL, {75, 80}},
        {"thinkpad", {75, 80}, end, "74", EINVAL, {75, 80}},
        {"thinkpad", {0, 100}, end, "0", EINVAL, {0, 100}},
        {"thinkpad", {0, 100}, start, "100", EINVAL, {0, 100}},
        {"asus", {0, 100}, end, "0", 0, {0, 0}},
        {"dell", {50, 100}, start, "20", 0, {50, 100}},
        {"dell", {50, 80}, start, "90", 0, {75, 80}},
        {"dell", {75, 80}, end, "60", 0, {75, 80}},
        {"huawei", {40, 70}, start, "90", 0, {90, 70}},
        {"lg", {0, 100}, end, "80", 0, {0, 80}},
        {"lg", {0, 80}, end, "90", EINVAL, {0, 80}},
        {"msi", {70, 80}, end, "60", 0, {50, 60}},
        {"msi", {70, 80}, start, "80", 0, {80, 90}},
        {"msi", {70, 80}, start, "91", EINVAL, {70, 80}},
        {"msi", {70, 80}, start, "2147483647", EINVAL, {70, 80}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(std::string(row.driver) + (row.which == end ? " end " : " start ") + row.text);
        auto held = row.held;
        EXPECT_EQ(ThresholdDriver::named(row.driver)->store(held, row.which, row.text), row.error);
        EXPECT_EQ(held, row.after) << held.start << ".." << held.end;
    }
}

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

} // namespace
} // namespace velmora
