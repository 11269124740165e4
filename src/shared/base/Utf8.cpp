// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Utf8.h"

#include <algorithm>

namespace velmora {

namespace {

std::size_t announcedLength(unsigned char lead)
{
    if (lead < 0x80) return 1;
    if (lead >= 0xc2 && lead < 0xe0) return 2;
    if (lead >= 0xe0 && lead < 0xf0) return 3;
    return lead >= 0xf0 && lead < 0xf5 ? 4 : 0;
}

bool continues(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0) == 0x80;
}

/// Whether a second byte may follow a first: no overlong forms, no surrogates, nothing past U+10FFFF.
bool mayFollow(unsigned char lead, unsigned char second)
{
    switch (lead) {
    case 0xe0:
        return second >= 0xa0;
    case 0xed:
        return second < 0xa0;
    case 0xf0:
        return second >= 0x90;
    case 0xf4:
        return second < 0x90;
    default:
        return true;
    }
}

/// Code points that Unicode never assigns (U+FDD0 to U+FDEF and the last two of each plane). They are
/// valid UTF-8, but sd-bus takes no text that holds one.
bool isNoncharacter(std::string_view character)
{
    if (character.size() < 3) return false;
    unsigned int code = static_cast<unsigned char>(character[0]) & (character.size() == 3 ? 0x0fU : 0x07U);
    for (const char byte : character.substr(1))
        code = code << 6U | (static_cast<unsigned char>(byte) & 0x3fU);
    return (code & 0xfffeU) == 0xfffeU || (code >= 0xfdd0 && code <= 0xfdef);
}

} // namespace

std::size_t utf8CharacterLength(std::string_view text)
{
    if (text.empty()) return 0;
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = announcedLength(lead);
    if (length < 2 || length > text.size()) return length == 1 ? 1 : 0;
    if (!std::ranges::all_of(text.substr(1, length - 1), continues)) return 0;
    return mayFollow(lead, static_cast<unsigned char>(text[1])) ? length : 0;
}

bool isUtf8(std::string_view text)
{
    while (const std::size_t length = utf8CharacterLength(text)) text.remove_prefix(length);
    return text.empty();
}

std::string cleanUtf8(std::string_view text)
{
    std::string clean;
    clean.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = text[0] == '\0' ? 0 : utf8CharacterLength(text);
        if (length == 0 || isNoncharacter(text.substr(0, length)))
            clean += '?';
        else
            clean += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return clean;
}

std::string_view utf8Prefix(std::string_view text, std::size_t bytes)
{
    if (text.size() <= bytes) return text;
    while (bytes > 0 && continues(text[bytes])) --bytes;
    return text.substr(0, bytes);
}

} // namespace velmora
