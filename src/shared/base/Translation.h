// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

/// Every sentence that a person reads goes through `tr` or `trn`, the windows' too: the reader's language is
/// looked up here and nowhere else. Lines of the log are for administrators and stay English.
///
/// A sentence is translated whole. What varies in it stands as %1 to %9, in any order.
namespace velmora {

/// Looks a text up in the reader's language; `text` itself where it has none. `many` is null but for a text
/// that depends on `count`, which then is the English plural.
using Translation = std::string (*)(const char* text, const char* many, std::int64_t count);

/// The identity: English.
std::string untranslated(const char* text, const char* many, std::int64_t count);

/// Replaces the translation and returns the one before. To be called before other threads start.
Translation setTranslation(Translation translation);

/// `text` with its placeholders replaced by `values`. One without a value stays as it is; a value is not
/// searched for placeholders.
std::string filledIn(std::string_view text, std::initializer_list<std::string> values);

/// The text as it stands in the reader's language.
std::string translated(const char* text, const char* many = nullptr, std::int64_t count = 1);

/// A sentence in the reader's language: tr("Charging to %1.", "80%").
template <std::convertible_to<std::string>... Values>
std::string tr(const char* text, const Values&... values)
{
    return filledIn(translated(text), {std::string(values)...});
}

/// One that depends on a number, which is %1: trn("In %1 month", "In %1 months", 3). More values follow.
template <std::convertible_to<std::string>... Values>
std::string trn(const char* one, const char* many, std::int64_t count, const Values&... values)
{
    return filledIn(translated(one, many, count), {std::to_string(count), std::string(values)...});
}

/// Marks a text that stands in a table, for the collector of texts; it is translated by `tr` when shown.
constexpr const char* trMark(const char* text)
{
    return text;
}

} // namespace velmora
