// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "wire/CalendarReport.h"

#include "base/Saturate.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <tuple>

namespace velmora::wire::calendar {

namespace {

// The first field says what a line is.
constexpr std::string_view eventMark = "event";
constexpr std::string_view problemMark = "problem";
constexpr std::string_view endMark = "end";

constexpr char separator = '\t';
constexpr char escape = '\\';

/// On one line, and without the separator.
std::string escaped(std::string_view text)
{
    std::string result;
    for (const char one : text.substr(0, maximumTextBytes)) {
        if (one == separator || one == '\n' || one == escape) {
            result += escape;
            result += one == separator ? 't' : one == '\n' ? 'n' : escape;
        } else {
            result += one;
        }
    }
    return result;
}

std::string unescaped(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == escape && i + 1 < text.size()) {
            ++i;
            result += text[i] == 't' ? separator : text[i] == 'n' ? '\n' : text[i];
        } else {
            result += text[i];
        }
    }
    return result.substr(0, maximumTextBytes);
}

std::string whole(Date date)
{
    return std::to_string(truncated(date.unixSeconds()));
}

std::optional<std::int64_t> number(std::string_view text)
{
    constexpr std::int64_t farthest = 253'402'300'800; // the year 10000
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    if (value < -farthest || value > farthest) return std::nullopt;
    return value;
}

using Fields = std::array<std::string_view, 8>;

/// As many as there are; the others are empty.
Fields fieldsOf(std::string_view line)
{
    Fields fields;
    for (auto& field : fields) {
        const auto end = std::min(line.find(separator), line.size());
        field = line.substr(0, end);
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    return fields;
}

std::optional<CalendarEvent> eventOf(const Fields& fields)
{
    const auto& [mark, start, end, allDay, hasTitle, identifier, title, location] = fields;
    const auto from = number(start);
    const auto to = number(end);
    if (!from || !to || *to < *from) return std::nullopt;
    CalendarEvent event{.identifier = unescaped(identifier),
                        .location = unescaped(location),
                        .start = Date::fromUnix(static_cast<double>(*from)),
                        .end = Date::fromUnix(static_cast<double>(*to)),
                        .isAllDay = allDay == "1"};
    if (hasTitle == "1") event.title = unescaped(title);
    return event;
}

} // namespace

std::string line(const CalendarEvent& event)
{
    std::string result(eventMark);
    for (const auto& field : {whole(event.start), whole(event.end), std::string(event.isAllDay ? "1" : "0"),
                              std::string(event.title ? "1" : "0"), escaped(event.identifier),
                              escaped(event.title.value_or("")), escaped(event.location)})
        result += separator + field;
    return result + '\n';
}

std::string problemLine(std::string_view problem)
{
    return std::string(problemMark) + separator + escaped(problem) + '\n';
}

std::string endLine(std::size_t calendars)
{
    return std::string(endMark) + separator + std::to_string(calendars) + '\n';
}

void Reader::take(std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto end = bytes.find('\n');
        rest_ += bytes.substr(0, end);
        rest_.resize(std::min(rest_.size(), maximumLineBytes + 1)); // enough to see that it is too long
        if (end == bytes.npos) return;
        if (rest_.size() <= maximumLineBytes) takeLine(rest_);
        rest_.clear();
        bytes.remove_prefix(end + 1);
    }
}

void Reader::takeLine(std::string_view line)
{
    const auto fields = fieldsOf(line);
    if (fields[0] == eventMark && events_.size() < maximumEvents) {
        auto event = eventOf(fields);
        if (event && (!filter_ || filter_(*event))) events_.push_back(std::move(*event));
    } else if (fields[0] == problemMark && problems_.size() < maximumProblems) {
        problems_.push_back(unescaped(fields[1]));
    } else if (const auto count = number(fields[1]); fields[0] == endMark && count && *count >= 0) {
        isWhole_ = true;
        calendars_ = static_cast<std::size_t>(*count);
    }
}

void tidy(std::vector<CalendarEvent>& events)
{
    const auto key = [](const CalendarEvent& one) { return std::tie(one.start, one.identifier); };
    std::ranges::stable_sort(events, {}, key);
    const auto isSame = [&](const auto& one, const auto& other) { return key(one) == key(other); };
    events.erase(std::unique(events.begin(), events.end(), isSame), events.end());
}

} // namespace velmora::wire::calendar
