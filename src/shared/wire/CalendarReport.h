// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/CalendarStore.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What a program that reads calendars tells on its standard output, a line each: events, what was wrong, and
/// at the end how many calendars there were. A report without that end was cut off.
namespace velmora::wire::calendar {

inline constexpr std::size_t maximumEvents = 20'000;
inline constexpr std::size_t maximumProblems = 20;
inline constexpr std::size_t maximumTextBytes = 500;   ///< of each text; the rest is cut off
inline constexpr std::size_t maximumLineBytes = 4'096; ///< with all that is escaped

std::string line(const CalendarEvent& event);
std::string problemLine(std::string_view problem);
std::string endLine(std::size_t calendars);

/// Reads a report as it comes, in pieces of any size. What it does not understand it passes over.
class Reader {
public:
    /// Sees each event first, may change it, and says whether it is to be kept.
    using Filter = std::function<bool(CalendarEvent&)>;

    explicit Reader(Filter filter = {}) : filter_(std::move(filter)) {}

    void take(std::string_view bytes);

    bool isWhole() const { return isWhole_; }
    std::size_t calendars() const { return calendars_; }
    const std::vector<std::string>& problems() const { return problems_; }
    std::vector<CalendarEvent>& events() { return events_; }

private:
    void takeLine(std::string_view line);

    Filter filter_;
    std::string rest_; ///< the beginning of a line
    bool isWhole_ = false;
    std::size_t calendars_ = 0;
    std::vector<std::string> problems_;
    std::vector<CalendarEvent> events_;
};

/// Sorts events by their start, and leaves out those that two calendars tell alike.
void tidy(std::vector<CalendarEvent>& events);

} // namespace velmora::wire::calendar
