// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/RecordCodec.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace velmora::record_codec {

namespace {

using json = nlohmann::ordered_json; // as for the history: what it is made of is in the program once

constexpr auto dateKey = "date";
/// Seconds since 1970, either way: no machine's clock is ten thousand years off.
constexpr double furthestDate = 3e11;

std::string withoutNul(std::string text)
{
    std::erase(text, '\0');
    return text;
}

std::string quoted(const std::string& text)
{
    return json(withoutNul(text)).dump(-1, ' ', false, json::error_handler_t::replace);
}

/// Empty for what is left out.
std::string textOf(const CloudRecord::Value& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) return quoted(*text);
    if (const auto* yes = std::get_if<bool>(&value)) return *yes ? "true" : "false";
    const auto* date = std::get_if<Date>(&value);
    const double number = date ? date->unixSeconds() : std::get<double>(value);
    if (!std::isfinite(number)) return {};
    const auto digits = json(number).dump();
    return date ? std::string(R"({"date":)") + digits + "}" : digits;
}

/// Makes fields of the parser's events as they come. Depth 1 is the record, depth 2 within a field: there
/// only a date has something to say.
class FieldsReader final : public nlohmann::json_sax<json> {
public:
    CloudRecord::Fields fields;

    bool start_object(std::size_t) override
    {
        if (depth_ == 1) date_.reset();
        return open(/*isObject=*/true);
    }
    bool start_array(std::size_t) override { return depth_ > 0 && open(/*isObject=*/false); }
    bool end_object() override
    {
        if (--depth_ != 1 || !date_) return true;
        return std::abs(*date_) > furthestDate || put(Date::fromUnix(*date_));
    }
    bool end_array() override
    {
        --depth_;
        return true;
    }
    bool key(string_t& name) override
    {
        if (depth_ == 1)
            name_ = withoutNul(std::move(name));
        else if (depth_ == 2)
            isDateNext_ = isObject_ && name == dateKey;
        return true;
    }
    bool null() override { return depth_ > 0; }
    bool boolean(bool value) override { return take(value); }
    bool string(string_t& value) override { return take(withoutNul(std::move(value))); }
    bool number_integer(std::int64_t value) override { return number(static_cast<double>(value)); }
    bool number_unsigned(std::uint64_t value) override { return number(static_cast<double>(value)); }
    bool number_float(double value, const string_t&) override { return number(value); }
    bool binary(binary_t&) override { return false; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override
    {
        return false;
    }

private:
    static constexpr int maximumDepth = 16;

    bool open(bool isObject)
    {
        if (depth_ == 1) isObject_ = isObject;
        isDateNext_ = false;
        return ++depth_ <= maximumDepth;
    }

    bool number(double value)
    {
        if (depth_ == 2 && isDateNext_) date_ = value;
        return take(value);
    }

    bool take(CloudRecord::Value value) { return depth_ == 1 ? put(std::move(value)) : depth_ > 0; }

    bool put(CloudRecord::Value value)
    {
        fields.insert_or_assign(name_, std::move(value));
        return fields.size() <= maximumFields;
    }

    int depth_ = 0;
    std::string name_;        ///< of the field
    bool isObject_ = false;   ///< the field is one
    bool isDateNext_ = false; ///< its next value is that of a date
    std::optional<double> date_;
};

} // namespace

std::optional<std::string> encode(const CloudRecord::Fields& fields)
{
    std::string text = "{";
    for (const auto& [name, value] : fields) {
        const auto encoded = textOf(value);
        if (encoded.empty()) continue;
        if (text.size() > 1) text += ',';
        text += quoted(name) + ":" + encoded;
        if (text.size() >= maximumBytes) return std::nullopt;
    }
    return text + "}";
}

std::optional<CloudRecord::Fields> decode(std::string_view text)
{
    if (text.size() > maximumBytes) return std::nullopt;
    FieldsReader reader;
    if (!json::sax_parse(text, &reader)) return std::nullopt;
    return std::move(reader.fields);
}

} // namespace velmora::record_codec
