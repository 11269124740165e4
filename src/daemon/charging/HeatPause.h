// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargePolicy.h"

#include <chrono>
#include <optional>

namespace velmora {

/// Decides when charging waits for the battery to cool down: once it has had 45 degrees Celsius for five
/// minutes, until it has less than 40. Only the battery's own sensor counts; how hot the rest of the machine
/// is does not matter to it.
///
/// A battery below 30 % is charged all the same, and one that is not charging has nothing to pause. Looks
/// that are more than three minutes apart, as those around a sleep are, say nothing of the time between them.
/// Batteries do not change by more than ten degrees from one look to the next: a reading that says so counts
/// once others have agreed for a fifteenth of the five minutes. A sensor that falls silent for three minutes
/// is taken for none.
class HeatPause {
public:
    using Time = std::chrono::milliseconds; ///< since boot

    static constexpr std::chrono::seconds usualPatience{300};
    /// `patience`: how long a battery has to be hot.
    explicit HeatPause(std::chrono::seconds patience = usualPatience) : patience_(patience) {}

    struct Facts {
        ChargeReading reading;
        std::optional<double> temperature{}; ///< degrees Celsius; absent where there is none to believe
        bool isAvoidable = true;             ///< false in a quick charge that a person began
        ChargeControl control = ChargeControl::none;
    };

    void observe(const Facts& facts, Time now);

    /// The level, whole percent, at which charging is to wait; absent while it need not.
    std::optional<int> pausedAt() const { return pausedAt_; }
    bool isCool() const { return last_ && *last_ < coolBelow; }
    /// This laptop can be paused: its battery has a sensor, and its charger takes a level to stop at.
    bool isPossible() const { return hasSensor_ && hasMeans_; }
    /// The charger cannot stop at this level: no more attempt below `end`, percent, which it took instead,
    /// until the battery is cool; none at all where nobody knows what it took.
    void giveUp(std::optional<int> end);

private:
    static constexpr double hotFrom = 45, coolBelow = 40; ///< degrees Celsius
    static constexpr double lowest = 30;                  ///< percent

    void feel(double celsius, Time now);
    void forget();
    void decide(const Facts& facts);

    Time patience_;
    std::optional<double> last_; ///< degrees Celsius, as believed
    Time lastTime_{};
    std::optional<Time> doubtedSince_; ///< readings are too far from the last that was believed
    std::optional<Time> hotSince_;     ///< and at every look since
    bool isHot_ = false;               ///< has been for long, and is not cool yet
    bool hasSensor_ = false;
    bool hasMeans_ = false;
    double lowestLevel_ = lowest; ///< percent; below it a battery is charged however hot it stays
    std::optional<int> pausedAt_;
};

} // namespace velmora
