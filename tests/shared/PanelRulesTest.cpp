// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/PredictionEngine.h"
#include "texts/PanelTexts.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <set>

namespace velmora {
namespace {

using duration::day;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

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
    const struct {
        const char* what;
        int samples;
        double seconds, first, last;
        std::int64_t months;
        std::optional<double> rate;
    } cases[] = {
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
    const struct {
        const char* what;
        int samples, hot;
        const char* heat;
        int deep;
        double level;
        std::vector<std::string> titles;
    } cases[] = {
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
    const struct {
        std::optional<double> rate;
        const char* text;
        ThemeColor color;
    } rates[] = {
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
    const std::pair<double, const char*> levels[] = {
        {79.6, "79%"}, {100, "100%"}, {-0.5, "0%"}, {nan, "0%"}, {infinity, "9223372036854775807%"}};
    for (const auto& [level, text] : levels) EXPECT_EQ(percentageText(level), text);
    EXPECT_EQ(limitCaption(89.9), "Limit to 89% charge");
}

} // namespace
} // namespace velmora
