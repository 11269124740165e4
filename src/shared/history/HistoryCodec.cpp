// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/HistoryCodec.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace velmora {

namespace {

using json = nlohmann::ordered_json; // as for the settings: what it is made of is in the program once

bool isFinite(const HSHistorySnapshot& sample)
{
    return std::isfinite(sample.timestamp.sinceReference) && std::isfinite(sample.percentage) &&
           std::isfinite(sample.health);
}

void appendNumber(std::string& out, double value)
{
    std::array<char, 32> text{};
    const auto print = [&](auto number) {
        out.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
    };
    // Most levels are whole, and whole numbers are printed in a tenth of the time.
    const int whole = std::abs(value) < 1e6 ? static_cast<int>(value) : 0;
    if (whole != 0 && whole == value)
        print(whole);
    else
        print(value);
}

/// Almost every text is plain, and need not go through the library a thousand times a save.
void appendText(std::string& out, const std::string& text)
{
    const auto isPlain = [](char one) { return one >= ' ' && one <= '~' && one != '"' && one != '\\'; };
    if (std::ranges::all_of(text, isPlain))
        out.append(1, '"').append(text).append(1, '"');
    else
        out += json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

void appendSample(std::string& out, const HSHistorySnapshot& sample)
{
    out += R"({"t":)";
    appendNumber(out, sample.timestamp.sinceReference);
    out += R"(,"p":)";
    appendNumber(out, sample.percentage);
    out += R"(,"h":)";
    appendNumber(out, sample.health);
    out += R"(,"s":)";
    appendText(out, sample.thermalState);
    out += sample.isCharging ? R"(,"c":true})" : R"(,"c":false})";
}

/// Makes samples of the parser's events as they come: a tree of a thousand objects, built only to be read
/// once, would be the most memory that the daemon ever needs. An event that no history has ends the parsing.
class HistoryReader final : public nlohmann::json_sax<json> {
public:
    std::vector<HSHistorySnapshot> samples;

    bool start_array(std::size_t) override { return open(/*isArray=*/true); }
    bool start_object(std::size_t) override { return open(/*isArray=*/false); }
    bool end_array() override { return close(); }
    bool end_object() override { return close(); }

    bool key(string_t& name) override
    {
        if (depth_ == sampleDepth) key_ = std::move(name);
        return true;
    }

    bool null() override { return other(); }
    bool boolean(bool value) override { return take('c', next_.isCharging, value) || other(); }
    bool string(string_t& value) override
    {
        return take('s', next_.thermalState, std::move(value)) || other();
    }
    bool number_integer(std::int64_t value) override { return number(static_cast<double>(value)); }
    bool number_unsigned(std::uint64_t value) override { return number(static_cast<double>(value)); }
    bool number_float(double value, const string_t&) override { return number(value); }
    bool binary(binary_t&) override { return false; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override
    {
        return false;
    }

private:
    static constexpr int sampleDepth = 2; ///< in the array, in an object

    bool open(bool isArray)
    {
        // The document is an array, its elements are objects, and what lies deeper belongs to an unknown key.
        if (depth_ == 0 && !isArray) return false;
        if (depth_ == 1 && isArray) return false;
        if (depth_ == sampleDepth) other();
        if (++depth_ == sampleDepth) found_.reset();
        return true;
    }

    bool close()
    {
        if (depth_-- != sampleDepth) return true;
        if (!found_.all()) return false;
        samples.push_back(next_);
        return true;
    }

    bool number(double value)
    {
        return take('t', next_.timestamp.sinceReference, value) || take('p', next_.percentage, value) ||
               take('h', next_.health, value) || other();
    }

    template <typename Field, typename Value>
    bool take(char name, Field& field, Value&& value)
    {
        if (depth_ != sampleDepth || key_.size() != 1 || key_[0] != name) return false;
        field = std::forward<Value>(value);
        found_.set(keys.find(name));
        return true;
    }

    /// A value that is none of ours, or of another type than ours: of a key that comes twice the last counts.
    bool other()
    {
        if (depth_ != sampleDepth) return depth_ > sampleDepth;
        if (key_.size() == 1 && keys.find(key_[0]) != keys.npos) found_.reset(keys.find(key_[0]));
        return true;
    }

    static constexpr std::string_view keys = "tphsc";

    int depth_ = 0;
    std::string key_;
    std::bitset<keys.size()> found_; ///< keys of the sample that have a value of their type
    HSHistorySnapshot next_{{}, 0, 0, {}, false};
};

} // namespace

std::string encodeHistory(const std::vector<HSHistorySnapshot>& samples)
{
    std::string out = "[";
    out.reserve(samples.size() * 96);
    for (const auto& sample : samples) {
        if (!isFinite(sample)) continue;
        if (out.size() > 1) out += ',';
        appendSample(out, sample);
    }
    out += ']';
    return out;
}

std::optional<std::vector<HSHistorySnapshot>> decodeHistory(std::string_view bytes)
{
    HistoryReader reader;
    reader.samples.reserve(history_limits::maximumLength);
    if (!json::sax_parse(bytes, &reader)) return std::nullopt;
    return std::move(reader.samples);
}

bool isWorthKeeping(const HSHistorySnapshot* last, const HSHistorySnapshot& candidate)
{
    if (!isFinite(candidate)) return false;
    if (!last) return true;
    const bool isCloseInTime = candidate.timestamp - last->timestamp < history_limits::minimumSpacing;
    const bool isCloseInLevel =
        std::abs(candidate.percentage - last->percentage) < history_limits::minimumChange;
    return candidate.isCharging != last->isCharging || !isCloseInTime || !isCloseInLevel;
}

} // namespace velmora
