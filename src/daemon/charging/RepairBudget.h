// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <chrono>
#include <deque>

namespace velmora {

/// A few repairs an hour: enough for resets by firmware and drivers, too few to fight with another program.
class RepairBudget {
public:
    static constexpr std::size_t mostAnHour = 4;

    /// Takes one repair at `now` (since boot), if there is one left.
    bool spend(std::chrono::milliseconds now)
    {
        while (!spent_.empty() && now - spent_.front() >= std::chrono::hours{1}) spent_.pop_front();
        if (spent_.size() >= mostAnHour) return false;
        spent_.push_back(now);
        return true;
    }

private:
    std::deque<std::chrono::milliseconds> spent_;
};

} // namespace velmora
