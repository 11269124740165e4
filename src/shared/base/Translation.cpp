// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Translation.h"

#include <utility>

namespace velmora {

namespace {

Translation current = untranslated;

} // namespace

std::string untranslated(const char* text, const char* many, std::int64_t count)
{
    return many && count != 1 ? many : text;
}

Translation setTranslation(Translation translation)
{
    return std::exchange(current, translation);
}

std::string filledIn(std::string_view text, std::initializer_list<std::string> values)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto digit =
            text[i] == '%' && i + 1 < text.size() ? static_cast<unsigned>(text[i + 1] - '1') : 9U;
        if (digit >= values.size()) {
            result += text[i];
        } else {
            result += values.begin()[digit];
            ++i;
        }
    }
    return result;
}

std::string translated(const char* text, const char* many, std::int64_t count)
{
    return current(text, many, count);
}

} // namespace velmora
