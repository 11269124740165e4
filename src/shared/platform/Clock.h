// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <chrono>

namespace velmora {

/// What time it is, and how much of it has passed.
class Clock {
public:
    virtual ~Clock() = default;

    /// The time of day; people and time servers may set it back.
    virtual Date now() const = 0;

    /// Time since the machine started, sleep included; never goes back. For durations.
    virtual std::chrono::milliseconds sinceBoot() const = 0;
};

} // namespace velmora
