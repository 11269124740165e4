// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/RedirectRequest.h"

#include "base/Wipe.h"
#include "identity/openid/Encoding.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace velmora::openid {

namespace {

using Parameters = std::map<std::string, std::string, std::less<>>;

/// Takes the part of `text` before `mark`, and the mark, from it; all of it where there is none.
std::string_view taken(std::string_view& text, char mark)
{
    const auto end = std::min(text.find(mark), text.size());
    const auto part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

/// "a+b%20c" as "a b c".
std::optional<std::string> decoded(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain += text[i] == '+' ? ' ' : text[i];
            continue;
        }
        unsigned value = 0;
        const auto digits = text.substr(i + 1, 2);
        const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
        if (digits.size() != 2 || end != digits.data() + 2) return std::nullopt;
        plain += static_cast<char>(value);
        i += 2;
    }
    return plain;
}

std::optional<Parameters> parametersOf(std::string_view query)
{
    Parameters found;
    while (!query.empty()) {
        auto value = taken(query, '&');
        const auto name = decoded(taken(value, '='));
        auto text = decoded(value);
        if (!name || !text || !found.emplace(*name, std::move(*text)).second) return std::nullopt;
    }
    return found;
}

std::string textOf(const Parameters& parameters, std::string_view name)
{
    const auto found = parameters.find(name);
    return found == parameters.end() ? std::string() : found->second;
}

Redirect redirectOf(const Parameters& parameters)
{
    Redirect redirect{.error = textOf(parameters, "error"),
                      .errorText = textOf(parameters, "error_description")};
    if (redirect.error.empty()) redirect.code = textOf(parameters, "code");
    if (parameters.contains("iss")) redirect.issuer = textOf(parameters, "iss");
    return redirect;
}

bool isSame(std::string_view text, std::string_view lower)
{
    return std::ranges::equal(text, lower, {}, [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
}

/// Whether this header says that the browser shows the answer to nobody: a picture or script of some page, or
/// a page that is fetched in case that somebody wants it.
bool saysBackground(std::string_view line)
{
    const auto name = taken(line, ':');
    const auto value = line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
    if (isSame(name, "sec-fetch-dest")) return !isSame(value, "document");
    constexpr std::string_view ahead = "prefetch";
    return (isSame(name, "sec-purpose") || isSame(name, "purpose")) &&
           isSame(value.substr(0, ahead.size()), ahead);
}

/// Whether the browser opens a page for the user, as far as its headers tell: no picture or script of another
/// page, and nothing fetched ahead. A browser that sends no such headers is believed.
bool isNavigation(std::string_view headers)
{
    while (!headers.empty()) {
        auto line = taken(headers, '\n');
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (saysBackground(line)) return false;
    }
    return true;
}

} // namespace

std::variant<Redirect, Stray> readRedirect(std::string_view head, std::string_view state)
{
    auto line = taken(head, '\n');
    if (line.ends_with('\r')) line.remove_suffix(1);
    const auto method = taken(line, ' ');
    auto query = taken(line, ' ');
    if (!query.starts_with('/') || !line.starts_with("HTTP/1.")) return Stray::malformed;
    if (method != "GET" && method != "HEAD") return Stray::method;
    if (taken(query, '?') != "/callback") return Stray::path;
    auto parameters = parametersOf(query);
    if (!parameters) return Stray::malformed;
    if (!isSameSecret(textOf(*parameters, "state"), state)) return Stray::state;
    if (method == "HEAD") return Stray::head;
    if (!isNavigation(head)) return Stray::background;
    auto redirect = redirectOf(*parameters);
    for (auto& [name, value] : *parameters) wipe(value);
    return redirect;
}

} // namespace velmora::openid
