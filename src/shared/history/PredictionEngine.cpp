// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/PredictionEngine.h"

#include "base/Saturate.h"
#include "base/Translation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string_view>

namespace velmora {

namespace {

using duration::month;
using duration::week;
constexpr double maximumLoss = 5; // percent a month that is reported

constexpr std::size_t samplesForPrediction = 11;
constexpr std::size_t samplesForRate = 6;
constexpr std::size_t samplesForPraise = 51;
constexpr std::ptrdiff_t hotSamples = 6;
constexpr std::ptrdiff_t deepDischarges = 4;
constexpr double deepDischarge = 15; // percent

constexpr std::int64_t monthsUnknown = 24;
constexpr std::int64_t monthsWithoutLoss = 36;
constexpr std::int64_t maximumMonths = 60;

double span(PredictionEngine::History history)
{
    return history.back().timestamp - history.front().timestamp;
}

double drop(PredictionEngine::History history)
{
    return history.front().health - history.back().health;
}

bool isHot(const HSHistorySnapshot& sample)
{
    return sample.thermalState == "Serious" || sample.thermalState == "Critical";
}

bool isDeepDischarge(const HSHistorySnapshot& sample)
{
    return sample.percentage < deepDischarge;
}

/// Version 4: all random but for six bits.
std::string randomUuid()
{
    constexpr std::string_view form = "xxxxxxxx-xxxx-4xxx-vxxx-xxxxxxxxxxxx";
    std::random_device random;
    std::string uuid(form);
    for (char& digit : uuid) {
        const auto bits = random() & 0xFU;
        if (digit == 'x') digit = "0123456789abcdef"[bits];
        if (digit == 'v') digit = "89ab"[bits & 3U];
    }
    return uuid;
}

PredictionEngine::HealthInsight insight(const char* title, const char* message,
                                        PredictionEngine::InsightSeverity severity)
{
    return {randomUuid(), tr(title), tr(message), severity};
}

} // namespace

std::int64_t PredictionEngine::predictReplacementMonths(History history)
{
    if (history.size() < samplesForPrediction) return monthsUnknown;
    if (span(history) <= week || drop(history) <= 0) return monthsWithoutLoss;
    const double remaining = history.back().health - endOfLifeHealth;
    if (remaining <= 0) return 0;
    const double months = remaining / (drop(history) / span(history)) / month;
    if (std::isnan(months)) return monthsUnknown;
    return std::clamp<std::int64_t>(truncated(months), 1, maximumMonths);
}

std::optional<double> PredictionEngine::degradationRatePerMonth(History history)
{
    if (history.size() < samplesForRate) return std::nullopt;
    if (span(history) < week || drop(history) < 0) return std::nullopt;
    const double monthly = drop(history) / span(history) * month;
    if (std::isnan(monthly)) return std::nullopt;
    return -std::min(monthly, maximumLoss);
}

std::vector<PredictionEngine::HealthInsight> PredictionEngine::generateInsights(History history)
{
    std::vector<HealthInsight> insights;
    if (std::ranges::count_if(history, isHot) >= hotSamples)
        insights.push_back(
            insight(trMark("Thermal Stress Detected"),
                    trMark("We've noticed frequent high temperatures during charging. Consider "
                           "charging in a cooler environment or using a lower wattage adapter."),
                    InsightSeverity::warning));
    if (std::ranges::count_if(history, isDeepDischarge) >= deepDischarges)
        insights.push_back(
            insight(trMark("Frequent Deep Discharges"),
                    trMark("Dropping below 15% frequently accelerates chemical aging. Try to keep "
                           "your charge above 20%."),
                    InsightSeverity::warning));
    if (insights.empty() && history.size() >= samplesForPraise)
        insights.push_back(
            insight(trMark("Excellent Maintenance"),
                    trMark("Your charging patterns are optimal. Your battery health is degrading 15% "
                           "slower than the average Mac."),
                    InsightSeverity::optimal));
    return insights;
}

} // namespace velmora
