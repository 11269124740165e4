// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/HistoryTrends.h"

#include "base/Decimal.h"
#include "base/Saturate.h"
#include "base/Translation.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace velmora::trends {

namespace {

using duration::day;
using duration::hour;
constexpr double maximumHold = hour; // that a sample speaks for

ThermalState state(const HSHistorySnapshot& sample)
{
    return ThermalMonitorService::thermalStateFromRawValue(sample.thermalState)
        .value_or(ThermalState::nominal);
}

bool isUsable(const HSHistorySnapshot& sample, Date now)
{
    const double age = now - sample.timestamp; // a comparison with what is no number is false
    return sample.timestamp >= Date{0} && age >= -day && sample.percentage >= 0 && sample.percentage <= 100 &&
           sample.health > 0 && sample.health <= 150;
}

} // namespace

Samples usable(History history, Date now)
{
    Samples kept;
    for (const auto& sample : history) {
        if (!isUsable(sample, now)) continue;
        kept.push_back(sample);
        kept.back().thermalState = ThermalMonitorService::rawValue(state(sample));
    }
    std::ranges::stable_sort(kept, {}, &HSHistorySnapshot::timestamp);
    return kept;
}

Window window(const Samples& usable, Range range, Date now)
{
    constexpr std::array lengths{day, duration::week, duration::month};
    const bool isAll = range == Range::all;
    const Date first = usable.empty() ? now : usable.front().timestamp;
    Window window{isAll ? std::min(first, now + -hour) : now + -lengths[static_cast<std::size_t>(range)],
                  usable.empty() ? now : std::max(now, usable.back().timestamp),
                  {}};
    const auto begin = std::ranges::lower_bound(usable, window.from, {}, &HSHistorySnapshot::timestamp);
    window.samples.assign(begin, usable.end());
    return window;
}

std::vector<Band> bands(const Samples& usable, const Window& window)
{
    std::vector<Band> bands;
    for (std::size_t i = 0; i < usable.size(); ++i) {
        const Date next = i + 1 < usable.size() ? usable[i + 1].timestamp : window.to;
        const Date end = std::min({next, usable[i].timestamp + maximumHold, window.to});
        const Date begin = std::max(usable[i].timestamp, window.from);
        if (end <= begin) continue;
        const auto here = state(usable[i]);
        const bool continues = !bands.empty() && bands.back().state == here && bands.back().to == begin;
        if (continues)
            bands.back().to = end;
        else
            bands.push_back({begin, end, here});
    }
    return bands;
}

std::array<double, 4> shares(const std::vector<Band>& bands)
{
    std::array<double, 4> shares{};
    double recorded = 0;
    for (const auto& band : bands) {
        shares[static_cast<std::size_t>(band.state)] += band.to - band.from;
        recorded += band.to - band.from;
    }
    if (recorded > 0)
        for (auto& share : shares) share /= recorded;
    return shares;
}

std::string shareText(double share)
{
    if (share > 0 && share < 0.01) return "<1%";
    if (share > 0.99 && share < 1) return ">99%";
    return std::to_string(std::lround(share * 100)) + "%";
}

std::string rateText(std::optional<double> perMonth)
{
    if (!perMonth || !std::isfinite(*perMonth)) return "–";
    return tr("%1% / mo", decimalText(*perMonth, 1));
}

std::string fitText(const std::optional<Fit>& fit)
{
    if (!fit) return "–";
    const double change = std::abs(fit->perMonth) < 0.05 ? 0 : fit->perMonth; // no "-0.0"
    return tr("%1 ± %2% / mo", decimalText(change, 1), decimalText(fit->uncertainty, 1));
}

std::string healthText(const Samples& samples)
{
    return samples.empty() ? "–" : decimalText(samples.back().health, 1) + "%";
}

std::optional<std::size_t> nearest(const Samples& samples, Date date)
{
    if (samples.empty()) return std::nullopt;
    const auto after = std::ranges::lower_bound(samples, date, {}, &HSHistorySnapshot::timestamp);
    if (after == samples.begin()) return 0;
    const auto index = static_cast<std::size_t>(after - samples.begin());
    const bool isBeforeNearer =
        after == samples.end() || date - samples[index - 1].timestamp <= samples[index].timestamp - date;
    return isBeforeNearer ? index - 1 : index;
}

Scale healthScale(const Samples& samples)
{
    constexpr double least = 2;
    constexpr std::array steps{0.5, 1.0, 2.0, 5.0, 10.0, 20.0, 50.0};
    if (samples.empty()) return {80, 100, 5};
    const auto [low, high] = std::ranges::minmax(samples, {}, &HSHistorySnapshot::health);
    const double slack = std::max(0.0, least - (high.health - low.health)) / 2;
    const double bottom = low.health - slack;
    const double top = high.health + slack;
    const double step = *std::ranges::find_if(steps, [&](double one) { return (top - bottom) / one <= 4.5; });
    return {std::max(0.0, std::floor(bottom / step) * step), std::ceil(top / step) * step, step};
}

namespace {

std::string isoTime(Date date)
{
    using namespace std::chrono;
    const sys_seconds moment{seconds{truncated(std::floor(date.unixSeconds()))}};
    const auto midnight = floor<days>(moment);
    const year_month_day calendar{midnight};
    const hh_mm_ss time{moment - midnight};
    const auto two = [](auto number) {
        const auto digits = std::to_string(number);
        return digits.size() < 2 ? "0" + digits : digits;
    };
    return std::to_string(static_cast<int>(calendar.year())) + "-" +
           two(static_cast<unsigned>(calendar.month())) + "-" + two(static_cast<unsigned>(calendar.day())) +
           "T" + two(time.hours().count()) + ":" + two(time.minutes().count()) + ":" +
           two(time.seconds().count()) + "Z";
}

} // namespace

std::string csv(const Samples& samples)
{
    std::string text = "time,percentage,health,thermalState,isCharging\n";
    for (const auto& sample : samples)
        text += isoTime(sample.timestamp) + "," + decimalText(sample.percentage, 2) + "," +
                decimalText(sample.health, 2) + "," + sample.thermalState + "," +
                (sample.isCharging ? "true" : "false") + "\n";
    return text;
}

} // namespace velmora::trends
