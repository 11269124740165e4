// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Translation.h"
#include "history/PredictionEngine.h"
#include "thermal/ThermalMonitorService.h"
#include "wire/VelmoraProtocol.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// All numbers of the history pages. Results are finite, whatever the input.
namespace velmora::trends {

using History = PredictionEngine::History;
using Samples = std::vector<HSHistorySnapshot>;
using ThermalState = ThermalMonitorService::ThermalState;

/// The samples that can be shown, oldest first: dated 2001 to a day after `now` (clocks differ), with a level
/// of 0 to 100 % and a health above 0 and at most 150 %. Their thermal text is one of the four.
Samples usable(History history, Date now);

enum class Range : std::uint8_t { day, week, month, all };
inline constexpr std::array rangeNames{trMark("Day"), trMark("Week"), trMark("Month"), trMark("All")};

/// A stretch of time that ends now, and the usable samples in it. It lasts an hour at least.
struct Window {
    Date from;
    Date to;
    Samples samples;
};
Window window(const Samples& usable, Range range, Date now);

/// A straight line through the health, by least squares over the mean of each day: within a day full capacity
/// moves by more than it ages in months.
struct Fit {
    double perMonth;    ///< percentage points in 30 days, a loss being negative
    double uncertainty; ///< see below
    Date middle;
    double atMiddle; ///< percent

    double at(Date date) const;
};
/// Nothing for samples of fewer than four days. The true change lies within `perMonth` ± `uncertainty` about
/// 9 times in 10: tried on simulated batteries whose days resemble the day before by up to 0.8 (84 to 97 %),
/// and on windows of 5 to 90 days of a real laptop's logged year, whose wear was no straight line (77 to 96
/// %).
std::optional<Fit> fit(const Samples& usable);

/// When the battery will be due for replacement, in words.
struct Forecast {
    std::string headline;
    std::string detail;
};
Forecast forecast(const Samples& usable, const std::optional<Fit>& fit);

/// "-1.2 ± 0.4% / mo"; a dash where there is none.
std::string fitText(const std::optional<Fit>& fit);
/// From first to last sample: "-1.2% / mo"; a dash where there is none.
std::string rateText(std::optional<double> perMonth);
/// "98.4%"; a dash where there is no sample.
std::string healthText(const Samples& samples);

/// A stretch of time in one thermal state. A sample counts until the next one, and an hour at most: after
/// that nothing is known.
struct Band {
    Date from;
    Date to;
    ThermalState state;
};
std::vector<Band> bands(const Samples& usable, const Window& window);

/// What part of the recorded time was spent in each state; all 0 where nothing was recorded.
std::array<double, 4> shares(const std::vector<Band>& bands);
/// "62%", "<1%".
std::string shareText(double share);

/// The index of the sample nearest to `date`; nothing where there are none.
std::optional<std::size_t> nearest(const Samples& samples, Date date);

/// A scale with round marks.
struct Scale {
    double lowest;
    double highest;
    double step;
};
/// For the health of `samples`: at least two points high, with three to six marks.
Scale healthScale(const Samples& samples);
inline constexpr Scale levelScale{0, 100, 25};

/// One line a sample: time in UTC (ISO 8601), level, health, thermal state, charging. With a header.
std::string csv(const Samples& samples);

} // namespace velmora::trends
