// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Decimal.h"
#include "base/Translation.h"
#include "history/HistoryTrends.h"

#include <algorithm>
#include <cmath>
#include <numeric>

// The line through the health, and what it says about the future.
namespace velmora::trends {

namespace {

using duration::day;
using duration::month;
constexpr double shortest = duration::week; // history that a forecast may rest on
constexpr std::size_t minimumDays = 4;
constexpr double maximumForecast = 60; // months

/// The mean of a day's samples.
struct Mean {
    double time = 0; ///< days from the first sample
    double health = 0;
};

std::vector<Mean> dailyMeans(const Samples& usable)
{
    std::vector<Mean> means;
    for (auto begin = usable.begin(); begin != usable.end();) {
        const auto date = [&](const auto& sample) {
            return std::floor(sample.timestamp.sinceReference / day);
        };
        const auto end =
            std::find_if(begin, usable.end(), [&](const auto& s) { return date(s) != date(*begin); });
        Mean mean;
        for (auto sample = begin; sample != end; ++sample) {
            mean.time += (sample->timestamp - usable.front().timestamp) / day;
            mean.health += sample->health;
        }
        const auto count = static_cast<double>(end - begin);
        means.push_back({mean.time / count, mean.health / count});
        begin = end;
    }
    return means;
}

/// How much a residual resembles the one before, 0 to 0.9. A line through few points follows them, and so
/// makes them look more independent than they are; that is put back.
double resemblance(const std::vector<double>& residuals)
{
    double squares = 0;
    double products = 0;
    for (std::size_t i = 0; i < residuals.size(); ++i) {
        squares += residuals[i] * residuals[i];
        if (i > 0) products += residuals[i] * residuals[i - 1];
    }
    if (squares <= 0) return 0;
    const double seen = products / squares;
    return std::clamp(seen + (2 + 4 * seen) / static_cast<double>(residuals.size()), 0.0, 0.9);
}

/// How many standard errors hold the truth 19 times in 20 (Student's distribution by its series at the
/// normal one; within 3 % from two degrees of freedom on).
double coverage(double degreesOfFreedom)
{
    const double v = std::max(degreesOfFreedom, 1.0);
    return 1.96 + 2.37 / v + 2.82 / (v * v) + 2.56 / (v * v * v);
}

/// Half the width of the slope's interval, points a day. `spread` is the sum of squares of the times.
double slopeUncertainty(const std::vector<double>& residuals, double spread)
{
    const auto count = static_cast<double>(residuals.size());
    const double squares = std::inner_product(residuals.begin(), residuals.end(), residuals.begin(), 0.0);
    const double alike = resemblance(residuals);
    const double independent = count * (1 - alike) / (1 + alike);
    const double inflation = std::sqrt((1 + alike) / (1 - alike));
    return coverage(independent - 2) * inflation * std::sqrt(squares / (count - 2) / spread);
}

std::string monthsText(double months)
{
    const auto whole = std::lround(months);
    if (months > maximumForecast) return tr("more than five years");
    if (whole < 1) return tr("less than a month");
    return trn("a month", "%1 months", whole);
}

/// Whether `monthsText` is a number and the word "months".
bool isCounted(double months)
{
    return months <= maximumForecast && std::lround(months) > 1;
}

std::string reachesText(double soonest, double latest)
{
    const auto first = monthsText(soonest);
    const auto last = monthsText(latest);
    if (first == last) return tr("Health reaches 80% in about %1.", first);
    const bool isShort = isCounted(soonest) && isCounted(latest);
    return tr("Health reaches 80% in %1 to %2.", isShort ? std::to_string(std::lround(soonest)) : first,
              last);
}

std::string health(double value)
{
    return decimalText(value, 1) + "%";
}

/// `text`, and what the samples' two ends alone would say, where they say anything.
std::string withEnds(const std::string& text, const Samples& usable)
{
    if (PredictionEngine::degradationRatePerMonth(usable).value_or(0) >= 0) return text;
    const auto months = static_cast<double>(PredictionEngine::predictReplacementMonths(usable));
    return months < 1 ? text : tr("%1 First and last sample alone: %2.", text, monthsText(months));
}

/// Months until a change of `perMonth` has used up `points`; none for a change that never does, or is nothing
/// but the rounding of sums.
std::optional<double> monthsFor(double points, double perMonth)
{
    return perMonth < -0.001 ? std::optional(points / -perMonth) : std::nullopt;
}

} // namespace

double Fit::at(Date date) const
{
    return atMiddle + perMonth * ((date - middle) / month);
}

std::optional<Fit> fit(const Samples& usable)
{
    const auto means = dailyMeans(usable);
    if (means.size() < minimumDays) return std::nullopt;
    const auto count = static_cast<double>(means.size());
    Mean middle;
    for (const auto& one : means)
        middle = {middle.time + one.time / count, middle.health + one.health / count};
    double spread = 0;
    double products = 0;
    for (const auto& one : means) {
        spread += (one.time - middle.time) * (one.time - middle.time);
        products += (one.time - middle.time) * (one.health - middle.health);
    }
    const double slope = products / spread;
    std::vector<double> residuals;
    residuals.reserve(means.size());
    for (const auto& one : means)
        residuals.push_back(one.health - middle.health - slope * (one.time - middle.time));
    return Fit{slope * 30, slopeUncertainty(residuals, spread) * 30,
               usable.front().timestamp + middle.time * day, middle.health};
}

Forecast forecast(const Samples& usable, const std::optional<Fit>& fit)
{
    constexpr double worn = PredictionEngine::endOfLifeHealth;
    if (!fit || usable.back().timestamp - usable.front().timestamp <= shortest)
        return {tr("Not known yet"), tr("A forecast needs samples from more than a week.")};
    const double today = fit->at(usable.back().timestamp);
    if (today <= worn)
        return {tr("Due now"), tr("Health is about %1, and a battery is worn at 80%.", health(today))};
    const auto likely = monthsFor(today - worn, fit->perMonth);
    const auto soonest = monthsFor(today - worn, fit->perMonth - fit->uncertainty);
    const auto latest = monthsFor(today - worn, fit->perMonth + fit->uncertainty);
    if (!soonest) return {tr("No loss so far"), tr("Health has not fallen since the first sample.")};
    if (!latest)
        return {
            tr("No loss that stands out"),
            withEnds(
                tr("The change is smaller than its uncertainty. At the fastest likely pace 80% is %1 away.",
                   monthsText(*soonest)),
                usable)};
    if (*soonest > maximumForecast)
        return {tr("In more than five years"),
                tr("Health reaches 80% that late even at the fastest likely pace.")};
    return {tr("In about %1", monthsText(*likely)), withEnds(reachesText(*soonest, *latest), usable)};
}

} // namespace velmora::trends
