// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/Json.h"

#include "identity/openid/Memory.h"

namespace velmora::openid {

namespace {

std::optional<std::string_view> textOf(const json_t* value)
{
    if (!json_is_string(value)) return std::nullopt;
    return std::string_view(json_string_value(value), json_string_length(value));
}

/// Whether it is nested no deeper and has no more values than is allowed: the parser would make all of them.
bool isWithinLimits(std::string_view text)
{
    std::size_t depth = 0, values = 1;
    bool isInText = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (isInText && c == '\\') ++at;
        if (c == '"') isInText = !isInText;
        if (isInText) continue;
        if (c == ',') ++values;
        if (c == '{' || c == '[') ++depth, ++values;
        if ((c == '}' || c == ']') && depth > 0) --depth;
        if (depth > Json::maximumDepth || values > Json::maximumValues) return false;
    }
    return true;
}

} // namespace

std::optional<Json> Json::parse(std::string_view text)
{
    wipeLibraryMemory();
    if (!isWithinLimits(text)) return std::nullopt;
    // Whole numbers too large for an integer would else spoil what nobody asks for.
    constexpr std::size_t flags = JSON_REJECT_DUPLICATES | JSON_DECODE_INT_AS_REAL | JSON_ALLOW_NUL;
    const std::shared_ptr<json_t> value(json_loadb(text.data(), text.size(), flags, nullptr), json_decref);
    if (!json_is_object(value.get())) return std::nullopt;
    return Json(value);
}

const json_t* Json::member(const char* name) const
{
    const json_t* const value = json_object_get(value_.get(), name);
    return json_is_null(value) ? nullptr : value;
}

std::optional<std::string_view> Json::text(const char* name) const
{
    return textOf(member(name));
}

std::optional<double> Json::number(const char* name) const
{
    const json_t* const value = member(name);
    if (!json_is_real(value)) return std::nullopt;
    return json_real_value(value);
}

std::optional<std::vector<std::string>> Json::texts(const char* name) const
{
    const json_t* const list = member(name);
    if (!json_is_array(list)) return std::nullopt;
    std::vector<std::string> found;
    for (std::size_t i = 0; i < json_array_size(list); ++i) {
        const auto one = textOf(json_array_get(list, i));
        if (!one) return std::nullopt;
        found.emplace_back(*one);
    }
    return found;
}

std::optional<std::vector<Json>> Json::objects(const char* name) const
{
    const json_t* const list = member(name);
    if (!json_is_array(list)) return std::nullopt;
    std::vector<Json> found;
    for (std::size_t i = 0; i < json_array_size(list); ++i) {
        json_t* const one = json_array_get(list, i);
        if (json_is_object(one)) found.push_back(Json({value_, one}));
    }
    return found;
}

} // namespace velmora::openid
