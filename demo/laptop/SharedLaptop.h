// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "SimulatedLaptop.h"

#include <atomic>
#include <cstdint>
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

    /// The drivers are loaded anew, perhaps with other files.
    void probe(const LaptopMake& make)
    {
        const std::lock_guard guard(mutex_);
        laptop_ = SimulatedLaptop(make);
        ++probes_;
    }
    /// How often that was done. A file that was opened before reads ENODEV in sysfs.
    std::uint64_t probes() const { return probes_; }

private:
    std::mutex mutex_;
    SimulatedLaptop laptop_;
    std::atomic<std::uint64_t> probes_ = 0;
};

} // namespace velmora
