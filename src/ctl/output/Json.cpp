// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "output/Json.h"

#include "base/Text.h"
#include "base/Utf8.h"

#include <array>
#include <charconv>
#include <cmath>

namespace velmora::ctl::json {

std::string text(std::string_view value)
{
    std::string result = "\"";
    for (const char letter : printable(cleanUtf8(value))) {
        if (letter == '"' || letter == '\\') result += '\\';
        result += letter;
    }
    return result + "\"";
}

std::string number(double value)
{
    if (!std::isfinite(value)) return "null";
    std::array<char, 32> digits{};
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
}

std::string integer(std::int64_t value)
{
    return std::to_string(value);
}

std::string truth(bool value)
{
    return value ? "true" : "false";
}

std::string array(const std::vector<std::string>& values)
{
    std::string result;
    for (const auto& value : values) result += (result.empty() ? "" : ",") + value;
    return "[" + result + "]";
}

std::string of(const KeyedArchive::Value& value)
{
    if (const auto* truthValue = std::get_if<bool>(&value)) return truth(*truthValue);
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return integer(*whole);
    if (const auto* real = std::get_if<double>(&value)) return number(*real);
    return text(std::get<std::string>(value));
}

Object& Object::add(std::string_view key, const std::string& value)
{
    members_ += (members_.empty() ? "" : ",") + json::text(key) + ":" + value;
    return *this;
}

Object object(const KeyedArchive& record)
{
    Object result;
    for (const auto& [key, value] : record.values()) result.add(key, of(value));
    return result;
}

} // namespace velmora::ctl::json
