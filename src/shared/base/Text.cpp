// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Text.h"

namespace velmora {

namespace {

/// Bytes of a character at the beginning of `text` that acts instead of showing; 0 for any other.
std::size_t invisibleLength(std::string_view text)
{
    const auto byte = [&](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    if (byte(0) == 0xc2 && byte(1) >= 0x80 && byte(1) < 0xa0) return 2; // U+0080 to U+009F
    if (byte(0) != 0xe2) return 0;
    const bool isMark = byte(1) == 0x80 && (byte(2) == 0x8e || byte(2) == 0x8f);  // U+200E and U+200F
    const bool isBreak = byte(1) == 0x80 && byte(2) >= 0xa8 && byte(2) <= 0xae;   // U+2028 to U+202E
    const bool isIsolate = byte(1) == 0x81 && byte(2) >= 0xa6 && byte(2) <= 0xa9; // U+2066 to U+2069
    return isMark || isBreak || isIsolate ? 3 : 0;
}

} // namespace

std::string printable(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t skipped = invisibleLength(text);
        if (skipped == 0) {
            const auto byte = static_cast<unsigned char>(text.front());
            result += byte < 0x20 || byte == 0x7f ? ' ' : text.front();
        }
        text.remove_prefix(skipped == 0 ? 1 : skipped);
    }
    return result;
}

} // namespace velmora
