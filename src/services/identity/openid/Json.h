// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>
#include <jansson.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora::openid {

/// A JSON object that came from outside. Members are asked for by name and type; one that is null is as one
/// that is not there.
class Json {
public:
    static constexpr std::size_t maximumDepth = 16;
    static constexpr std::size_t maximumValues = 20'000;

    /// Nullopt where the text is no JSON object, names a member twice, or is beyond the limits.
    static std::optional<Json> parse(std::string_view text);

    bool has(const char* name) const { return member(name) != nullptr; }
    /// The text as it is; nullopt where it is none.
    std::optional<std::string_view> text(const char* name) const;
    std::optional<double> number(const char* name) const;
    bool isTrue(const char* name) const { return json_is_true(member(name)); }
    /// An array of texts; nullopt where it is none or has something else in it.
    std::optional<std::vector<std::string>> texts(const char* name) const;
    /// The objects of an array; nullopt where it is none.
    std::optional<std::vector<Json>> objects(const char* name) const;

private:
    explicit Json(std::shared_ptr<json_t> value) : value_(std::move(value)) {}

    /// Null where there is none.
    const json_t* member(const char* name) const;

    std::shared_ptr<json_t> value_;
};

} // namespace velmora::openid
