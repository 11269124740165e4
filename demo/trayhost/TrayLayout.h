// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>

namespace velmora {

/// Where the items stand in the bar: from its right end to the left, in the order in which they came, so that
/// one that comes moves none. Pixels of the screen, whose top the bar is.
struct TrayLayout {
    static constexpr int barHeight = 28;
    static constexpr int cellWidth = 32;
    static constexpr int margin = 4; ///< at the bar's right end

    struct Point {
        int x, y;
    };

    int barWidth = 0;
    std::size_t items = 0;

    /// How many of them there is room for.
    std::size_t shown() const
    {
        return std::min(items, static_cast<std::size_t>(std::max(barWidth - margin, 0) / cellWidth));
    }

    /// The middle of an item that is shown.
    Point centre(std::size_t item) const
    {
        return {barWidth - margin - cellWidth * static_cast<int>(item) - cellWidth / 2, barHeight / 2};
    }

    /// The item at a place of the bar.
    std::optional<std::size_t> at(int x) const
    {
        const int fromRight = barWidth - margin - 1 - x;
        if (fromRight < 0) return std::nullopt;
        const auto item = static_cast<std::size_t>(fromRight / cellWidth);
        return item < shown() ? std::optional(item) : std::nullopt;
    }
};

} // namespace velmora
