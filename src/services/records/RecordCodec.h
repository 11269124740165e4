// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/CloudDatabase.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The fields of a record as the text of one JSON object, the same in every store: a number is a double, a
/// date is {"date": seconds since 1970}.
namespace velmora::record_codec {

inline constexpr std::size_t maximumBytes = 65'536; ///< of a record's text
inline constexpr std::size_t maximumFields = 256;

/// Leaves out numbers and dates that are not finite, and U+0000 in texts; what is not UTF-8 is replaced.
/// Nothing where the text would be too long.
std::optional<std::string> encode(const CloudRecord::Fields& fields);

/// Fields of any other type are passed over. Nothing for what is not one JSON object, too long, nested
/// deeply, or has too many fields.
std::optional<CloudRecord::Fields> decode(std::string_view text);

} // namespace velmora::record_codec
