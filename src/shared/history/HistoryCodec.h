// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/VelmoraProtocol.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// The history file: one compact JSON array, oldest sample first, an object a sample with the keys "t"
/// (seconds since 2001-01-01 00:00:00 UTC), "p" and "h" (percent), "s" (thermal text) and "c" (charging).

/// Every double is written so that it reads back as the same double. A sample that holds a number which is
/// not finite is left out; bytes of a text that are not UTF-8 become replacement characters.
std::string encodeHistory(const std::vector<HSHistorySnapshot>& samples);

/// The samples in file order; unknown keys are passed over. All or nothing: nothing where `bytes` are not
/// such an array, any key is missing or holds another type, or any number is too large for a double. Never
/// throws for what the bytes hold.
std::optional<std::vector<HSHistorySnapshot>> decodeHistory(std::string_view bytes);

/// Limits of a history.
namespace history_limits {
inline constexpr double minimumSpacing = 900;      ///< seconds
inline constexpr double minimumChange = 5.0;       ///< percentage points
inline constexpr std::size_t maximumLength = 1000; ///< samples
} // namespace history_limits

/// Whether `candidate` adds anything to `last` (null: the history is empty): it is dropped when the
/// charging flag is the same, less than `minimumSpacing` has passed and the level differs by less than
/// `minimumChange`. To a clock that was set back no time has passed. A candidate with a number that is not
/// finite is never kept.
bool isWorthKeeping(const HSHistorySnapshot* last, const HSHistorySnapshot& candidate);

} // namespace velmora
