// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/VelmoraProtocol.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velmora {

/// Forecasts from a battery's history. A history is oldest first; only its own timestamps count, so that the
/// same history always gives the same result.
class PredictionEngine {
public:
    using History = std::span<const HSHistorySnapshot>;

    enum class InsightSeverity : std::uint8_t { optimal, warning, critical };

    /// Advice, as a card shows it.
    struct HealthInsight {
        std::string id; ///< a UUID, new for each
        std::string title;
        std::string message;
        InsightSeverity severity;
    };

    static constexpr double endOfLifeHealth = 80; ///< percent; a battery below it is to be replaced

    /// Months until the battery is due for replacement, at the pace of the history: 0 for one that is, else 1
    /// to 60. Of fewer than 11 samples, or numbers that cannot be counted with, 24; of a week or less, or
    /// where no health was lost, 36.
    static std::int64_t predictReplacementMonths(History history);

    /// Change of health in percent a month, a loss being negative: -5 at the most, -0.0 where nothing was
    /// lost. Nothing for fewer than 6 samples, less than a week, a gain, or numbers that cannot be counted
    /// with.
    static std::optional<double> degradationRatePerMonth(History history);

    static std::vector<HealthInsight> generateInsights(History history);
};

} // namespace velmora
