// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/HistoryTrends.h"
#include "history/PredictionEngine.h"
#include "texts/PanelTexts.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <set>

namespace velmora {
namespace {

using duration::day;
using duration::hour;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr Date now{800'064'000}; // midnight, UTC

HSHistorySnapshot sample(double age, double health, double level = 60, const char* state = "Nominal")
{
    return {now + -age, level, health, state, false};
}

/// A sample every six hours for so many days up to now, whose health falls by `perMonth` points in 30 days
/// from `first` on. Runs of five days lie `wobble` points
/// below, others do not.
trends::Samples ageing(int days, double perMonth, double wobble = 0, double first = 95)
{
    trends::Samples samples;
    for (int i = 0; i < days * 4; ++i)
        samples.push_back(
            sample((days - i / 4.0) * day, first - perMonth * i / 120 - (i / 20 % 2 == 0 ? 0 : wobble)));
    return samples;
}

TEST(HistoryTrends, UsesWhatCanBeShownInOrderOfTime)
{
    const trends::Samples history{sample(2 * hour, 90),  sample(3 * hour, 91, 60, "Lukewarm"),
                                  sample(nan, 90),       sample(infinity, 90),
                                  sample(-infinity, 90), sample(-2 * day, 90),
                                  sample(1e300, 90),     sample(hour, nan),
                                  sample(hour, 0),       sample(hour, 1e308),
                                  sample(hour, 90, nan), sample(hour, 90, 101)};
    EXPECT_EQ(trends::usable(history, now), (trends::Samples{sample(3 * hour, 91), sample(2 * hour, 90)}));
}

TEST(HistoryTrends, WindowsEndNowAndFindTheNearestSample)
{
    const trends::Samples samples{sample(40 * day, 95), sample(8 * day, 94), sample(2 * day, 93),
                                  sample(hour, 92)};
    const std::pair<trends::Range, std::size_t> cases[] = {{trends::Range::day, 1},
                                                           {trends::Range::week, 2},
                                                           {trends::Range::month, 3},
                                                           {trends::Range::all, 4}};
    for (const auto& [range, count] : cases)
        EXPECT_EQ(trends::window(samples, range, now).samples.size(), count);
    EXPECT_GE(trends::window({sample(0, 90)}, trends::Range::all, now).from, now + -hour);
    EXPECT_GT(now, trends::window({}, trends::Range::all, now).from);

    EXPECT_EQ(trends::nearest({}, now), std::nullopt);
    for (const auto& [age, index] : {std::pair(99 * day, 0U), {25 * day, 0U}, {9 * day, 1U}, {-day, 3U}})
        EXPECT_EQ(trends::nearest(samples, now + -age), index) << age / day;
}

TEST(HistoryTrends, ASampleSpeaksForItsStateUntilTheNextOneAndAnHourAtMost)
{
    const trends::Samples samples{sample(25 * hour, 90, 60, "Critical"),
                                  sample(24.5 * hour, 90, 60, "Serious"), sample(3 * hour, 90),
                                  sample(2.5 * hour, 90), sample(0.5 * hour, 90, 60, "Fair")};
    const auto bands = trends::bands(samples, trends::window(samples, trends::Range::day, now));
    std::string told;
    for (const auto& [from, to, state] : bands)
        told += std::string(ThermalMonitorService::rawValue(state)) + " " +
                std::to_string(std::lround((now - from) / 60)) + "-" +
                std::to_string(std::lround((now - to) / 60)) + "; ";
    EXPECT_EQ(told, "Serious 1440-1410; Nominal 180-90; Fair 30-0; ");
    EXPECT_EQ(trends::shares(bands), (std::array{0.6, 0.2, 0.2, 0.0}));
    EXPECT_EQ(trends::shares({}), (std::array{0.0, 0.0, 0.0, 0.0}));
    EXPECT_EQ(trends::shareText(0.004) + trends::shareText(0.996) + trends::shareText(1), "<1%>99%100%");
}

TEST(HistoryTrends, ForecastSaysHowLongAndHowSurely)
{
    const std::tuple<const char*, trends::Samples, const char*, const char*, const char*> cases[] = {
        {"nothing", {}, "–", "Not known yet", "A forecast needs samples from more than a week."},
        {"six days", ageing(6, 1), "-1.0 ± 0.0% / mo", "Not known yet",
         "A forecast needs samples from more than a week."},
        {"an even loss", ageing(30, 1), "-1.0 ± 0.0% / mo", "In about 14 months",
         "Health reaches 80% in about 14 months. First and last sample alone: 14 months."},
        {"days differ", ageing(60, 3, 1), "-3.1 ± 0.6% / mo", "In about 3 months",
         "Health reaches 80% in 2 to 3 months. First and last sample alone: 2 months."},
        {"they differ by more than it ages", ageing(20, 1, 1), "-2.1 ± 19.4% / mo", "No loss that stands out",
         "The change is smaller than its uncertainty. At the fastest likely pace 80% is a month away. First "
         "and "
         "last sample alone: 5 months."},
        {"no loss", ageing(60, 0), "0.0 ± 0.0% / mo", "No loss so far",
         "Health has not fallen since the first sample."},
        {"hardly any", ageing(60, 0.1), "-0.1 ± 0.0% / mo", "In more than five years",
         "Health reaches 80% that late even at the fastest likely pace."},
        {"worn", ageing(30, 1, 0, 79), "-1.0 ± 0.0% / mo", "Due now",
         "Health is about 78.0%, and a battery is worn at 80%."},
    };
    for (const auto& [what, samples, fit, headline, detail] : cases) {
        SCOPED_TRACE(what);
        const auto line = trends::fit(samples);
        const auto forecast = trends::forecast(samples, line);
        EXPECT_EQ(trends::fitText(line), fit);
        EXPECT_EQ(forecast.headline, headline);
        EXPECT_EQ(forecast.detail, detail);
    }
}

TEST(HistoryTrends, ScaleHoldsEverySampleBetweenAFewRoundMarks)
{
    const std::pair<double, double> cases[] = {
        {100, 100}, {98.2, 99.5}, {84.3, 99.5}, {0.1, 150}, {0.1, 0.2}};
    for (const auto& [low, high] : cases) {
        const auto [lowest, highest, step] = trends::healthScale({sample(0, high), sample(0, low)});
        EXPECT_LE(lowest, low);
        EXPECT_GE(highest, high);
        EXPECT_GE(lowest, 0);
        EXPECT_EQ(std::remainder(lowest, step), 0);
        EXPECT_LE((highest - lowest) / step, 6) << low;
        EXPECT_GE((highest - lowest) / step, 2) << low;
    }
}

TEST(HistoryTrends, TableIsPlainAndInUtc)
{
    EXPECT_EQ(trends::csv({{Date{0}, 72.125, 98.4, "Fair", true}, {Date{86'399.9}, 7, 98, "Nominal", false}}),
              "time,percentage,health,thermalState,isCharging\n"
              "2001-01-01T00:00:00Z,72.12,98.40,Fair,true\n"
              "2001-01-01T23:59:59Z,7.00,98.00,Nominal,false\n");
}

/// Samples at equal distances, whose health goes evenly from `first` to `last`.
std::vector<HSHistorySnapshot> history(int samples, double seconds, double first, double last)
{
    std::vector<HSHistorySnapshot> list;
    for (int i = 0; i < samples; ++i) {
        const bool isFirst = i == 0;
        const double part = isFirst ? 0 : double(i) / (samples - 1);
        const double health = isFirst ? first : i == samples - 1 ? last : first + (last - first) * part;
        list.emplace_back(Date{1000 + (isFirst ? 0 : seconds * part)}, 60, health, "Nominal", false);
    }
    return list;
}

TEST(PredictionEngine, FollowsTheLossOfHealth)
{
    const std::tuple<const char*, int, double, double, double, std::int64_t, std::optional<double>> cases[] =
        {
            {"no history", 0, 0, 0, 0, 24, {}},
            {"too few for a rate", 5, 30 * day, 100, 98, 24, {}},
            {"too few for a prediction", 10, 30 * day, 100, 98, 24, -2},
            {"too short", 11, 3 * day, 100, 98, 36, {}},
            {"a week to the second", 11, 7 * day, 94, 93, 36, -30.0 / 7},
            {"no loss", 11, 8 * day, 94, 94, 36, -0.0},
            {"a gain", 11, 30 * day, 94, 95, 36, {}},
            {"two points a month", 11, 30 * day, 100, 98, 9, -2},
            {"hardly any loss", 11, 30 * day, 100, 99.9, 60, -(100 - 99.9)},
            {"nearly due", 11, 30 * day, 81, 80.5, 1, -0.5},
            {"due", 11, 30 * day, 82, 80, 0, -2},
            {"a fast loss", 11, 10 * day, 100, 97, 1, -5},
            {"health is no number", 11, 30 * day, 100, nan, 24, {}},
            {"a loss without bounds", 11, 30 * day, infinity, 90, 1, -5},
            {"time without bounds", 11, infinity, 100, 98, 60, -0.0},
            {"backwards", 11, -30 * day, 100, 98, 36, {}},
        };
    for (const auto& [what, samples, seconds, first, last, months, rate] : cases) {
        SCOPED_TRACE(what);
        const auto samplesOf = history(samples, seconds, first, last);
        EXPECT_EQ(PredictionEngine::predictReplacementMonths(samplesOf), months);
        const auto found = PredictionEngine::degradationRatePerMonth(samplesOf);
        ASSERT_EQ(found.has_value(), rate.has_value());
        if (!rate) continue;
        EXPECT_DOUBLE_EQ(*found, *rate);
        EXPECT_EQ(std::signbit(*found), std::signbit(*rate));
    }
}

TEST(PredictionEngine, AdvisesOnHeatAndDeepDischargesAndPraisesOnlyWithoutThem)
{
    const std::tuple<const char*, int, int, const char*, int, double, std::vector<std::string>> cases[] = {
        {"hot", 10, 6, "Serious", 0, 60, {"Thermal Stress Detected"}},
        {"critical is hot too", 10, 6, "Critical", 0, 60, {"Thermal Stress Detected"}},
        {"seldom hot", 50, 5, "Serious", 0, 60, {}},
        {"another text", 51, 6, "serious", 0, 60, {"Excellent Maintenance"}},
        {"deep", 60, 0, "", 4, 14.9, {"Frequent Deep Discharges"}},
        {"not that deep", 60, 0, "", 4, 15, {"Excellent Maintenance"}},
        {"seldom deep", 60, 0, "", 3, 5, {"Excellent Maintenance"}},
        {"both", 60, 6, "Serious", 4, 5, {"Thermal Stress Detected", "Frequent Deep Discharges"}},
    };
    std::set<std::string> ids;
    std::size_t cards = 0;
    for (const auto& [what, samples, hot, heat, deep, level, titles] : cases) {
        SCOPED_TRACE(what);
        auto list = history(samples, day, 100, 100);
        for (int i = 0; i < hot; ++i) list[size_t(i)].thermalState = heat;
        for (int i = 0; i < deep; ++i) list[size_t(samples - 1 - i)].percentage = level;
        std::vector<std::string> found;
        for (const auto& card : PredictionEngine::generateInsights(list)) {
            found.push_back(card.title);
            ids.insert(card.id);
            EXPECT_EQ(card.severity == PredictionEngine::InsightSeverity::optimal, card.title[0] == 'E');
        }
        EXPECT_EQ(found, titles);
        cards += found.size();
    }
    EXPECT_EQ(ids.size(), cards);
}

TEST(PanelTexts, SayWhatTheValuesMean)
{
    using namespace panel;
    using enum ThemeColor;
    const std::tuple<std::optional<double>, const char*, ThemeColor> rates[] = {
        {{}, "94%", batteryGreen},          {-0.96, "-1.0% / mo", batteryGreen},
        {1.0, "1.0% / mo", batteryWarning}, {2.0, "2.0% / mo", batteryDanger},
        {nan, "94%", batteryGreen},
    };
    for (const auto& [rate, text, color] : rates) {
        EXPECT_EQ(degradationText(rate), text);
        EXPECT_EQ(degradationAccessibleName(rate), std::string("Degradation rate: ") + text);
        EXPECT_EQ(name(degradationColor(rate)), name(color));
    }
    EXPECT_GT(degradationText(-std::numeric_limits<double>::max()).size(), 300U);
    EXPECT_EQ(percentageText(nan) + percentageText(infinity), "0%9223372036854775807%");
}

} // namespace
} // namespace velmora
