// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/TokenBucket.h"

namespace velmora {

/// A few repairs an hour: enough for resets by firmware and drivers, too few to fight with another program.
class RepairBudget {
public:
    static constexpr std::size_t maximumAnHour = 4;

    /// Takes one repair at `now` (since boot), if there is one left.
    bool spend(std::chrono::milliseconds now) { return repairs_.spend(now); }

private:
    TokenBucket repairs_{maximumAnHour, std::chrono::minutes{60 / maximumAnHour}};
};

} // namespace velmora
