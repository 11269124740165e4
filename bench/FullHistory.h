// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "history/HistoryCodec.h"

namespace velmora {

/// All the samples that are kept: what a laptop has after some weeks.
inline std::vector<HSHistorySnapshot> fullHistory()
{
    std::vector<HSHistorySnapshot> samples;
    for (std::size_t i = 0; i < history_limits::maximumLength; ++i) {
        const auto number = static_cast<double>(i);
        samples.emplace_back(Date{7e8 + 900.0123 * number}, 20 + static_cast<double>(i % 60),
                             91.37 - number / 997, "Nominal", i % 2 == 0);
    }
    return samples;
}

} // namespace velmora
