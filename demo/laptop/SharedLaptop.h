// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "SimulatedLaptop.h"

#include <mutex>

namespace velmora {

/// A simulated laptop that several threads look at, each for a moment.
class SharedLaptop {
public:
    explicit SharedLaptop(const LaptopMake& make) : laptop_(make) {}

    /// Calls `look` with the laptop, alone.
    template <typename Look>
    auto with(Look look)
    {
        const std::lock_guard guard(mutex_);
        return look(laptop_);
    }

private:
    std::mutex mutex_;
    SimulatedLaptop laptop_;
};

} // namespace velmora
