// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace velmora {

/// The level that firmware holds while a limiter of its own is on: its maker's choice, of which no attribute
/// tells. Percent.
struct FixedLimit {
    std::string_view text; ///< as ChargerReport::fixedLimit tells it
    int start;             ///< below it charging surely goes on; negative: the firmware decides
    int end;               ///< from here on charging surely stops
    bool isExact = true;   ///< false where it is one of several levels
};

/// IdeaPad, Yoga and Legion hold one of the first two, by model. Of other makers nothing is known.
inline constexpr std::array fixedLimits{
    FixedLimit{"55-60", 55, 60},
    FixedLimit{"80", -1, 80},
    FixedLimit{"55-60 or 80", 55, 80, false},
    FixedLimit{"unknown", 1, 99, false},
};

/// The row of that text; null for a text that nobody knows, the empty one included.
inline constexpr const FixedLimit* fixedLimit(std::string_view text)
{
    const auto* found = std::ranges::find(fixedLimits, text, &FixedLimit::text);
    return found == fixedLimits.end() ? nullptr : found;
}

} // namespace velmora
