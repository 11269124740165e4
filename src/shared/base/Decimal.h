// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>
#include <charconv>
#include <string>

namespace velmora {

/// `value` with this many digits after the point, whatever the locale. -0.04 with one digit
/// reads "-0.0".
inline std::string decimalText(double value, int digitsAfterPoint)
{
    std::array<char, 400> digits; // the largest double has 309 before the point
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                   std::chars_format::fixed, digitsAfterPoint)
                         .ptr;
    return {digits.data(), end};
}

} // namespace velmora
