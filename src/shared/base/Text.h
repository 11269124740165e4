// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// `text` without the blanks at either end.
inline std::string trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\n\v\f\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == text.npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

/// `text` (UTF-8) as one line that does nothing but show: control characters become blanks, and what turns
/// the direction of writing or breaks lines is left out.
std::string printable(std::string_view text);

} // namespace velmora
