// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace velmora {

/// `value` without its fraction, limited to the range of the integer; NaN becomes 0.
inline std::int64_t truncated(double value)
{
    constexpr double beyond = 9'223'372'036'854'775'808.0; // 2^63, the first double past the largest integer
    if (std::isnan(value)) return 0;
    if (value >= beyond) return std::numeric_limits<std::int64_t>::max();
    if (value < -beyond) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

} // namespace velmora
