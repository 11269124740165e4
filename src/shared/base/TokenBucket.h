// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <algorithm>
#include <chrono>

namespace velmora {

/// Permits for what must not happen too often: `atOnce` in a row, then one each `interval`. Times are those
/// of one clock that never goes back, given by the caller.
class TokenBucket {
public:
    using Time = std::chrono::milliseconds;

    constexpr TokenBucket(int atOnce, Time interval) : interval_(interval), depth_((atOnce - 1) * interval) {}

    /// Takes a permit at `now`; returns whether there was one.
    bool spend(Time now)
    {
        if (wait(now) > Time::zero()) return false;
        fullAt_ = std::max(fullAt_, now) + interval_;
        return true;
    }

    /// How long from `now` on there is no permit; zero where there is one.
    Time wait(Time now) const { return std::max(fullAt_ - depth_ - now, Time::zero()); }

    /// All permits are there again, as in a new bucket.
    bool isFull(Time now) const { return fullAt_ <= now; }

private:
    Time interval_;
    Time depth_;
    Time fullAt_ = Time::min() / 2; ///< when all permits are back
};

} // namespace velmora
