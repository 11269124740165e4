// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

/// Bytes of the character that `text` begins with; 0 where it begins with none that UTF-8 knows (overlong
/// forms and surrogates included) or is empty.
std::size_t utf8CharacterLength(std::string_view text);

/// Whether all of `text` is UTF-8.
bool isUtf8(std::string_view text);

/// `text` as a bus accepts it: valid UTF-8 without a NUL and without noncharacters; whatever else
/// becomes question marks.
std::string cleanUtf8(std::string_view text);

/// The longest beginning of `text` (valid UTF-8) that has at most `bytes` bytes and splits no character.
std::string_view utf8Prefix(std::string_view text, std::size_t bytes);

} // namespace velmora
