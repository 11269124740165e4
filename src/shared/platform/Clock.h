// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <chrono>

namespace velmora {

/// The time of day and elapsed time.
class Clock {
public:
    virtual ~Clock() = default;

    /// The time of day; it may be set back.
    virtual Date now() const = 0;

    /// Time since the machine started, sleep included; never goes back. For durations.
    virtual std::chrono::milliseconds sinceBoot() const = 0;
};

} // namespace velmora
