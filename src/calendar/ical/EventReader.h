// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ical/Wall.h"
#include "platform/CalendarStore.h"

#include <ctime>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Reads iCalendar texts (RFC 5545) and keeps the occurrences that touch a stretch of time: of single and
/// recurring events, with what was moved, called off or left out. Rules that recur by the minute or faster,
/// or that would take long to work out, are passed over. For a process with one thread; see Wall.
class EventReader {
public:
    EventReader(Date from, Date to) : from_(from), to_(to) {}

    /// One file, or as much of a calendar as belongs together: what was moved out of a recurring event counts
    /// for that event in the same text. Returns what was wrong with it, empty for nothing: the rest was
    /// read all the same.
    std::string read(std::string_view text);

    const std::vector<CalendarEvent>& events() const { return events_; }

private:
    /// One VEVENT.
    struct Source {
        CalendarEvent event{}; ///< its first occurrence
        icaltimetype start{};  ///< on the clock of its place
        std::string zone{};
        int days = 0;          ///< that it lasts, of an all-day event
        std::string version{}; ///< alike in all versions of it, of which the highest sequence counts
        int sequence = 0;
        bool isCancelled = false;
    };
    /// What stands for an occurrence of a recurring event.
    struct Moved {
        Source source;
        icaltimetype original{}; ///< of the occurrence, on the clock of its place
        std::string zone{};
        bool isForAllLater = false;
    };
    /// What a recurring event's own occurrences give way to.
    struct Overrides {
        std::set<Date> moments{};       ///< of the occurrences that others stand for
        std::map<Date, Source> later{}; ///< as it is from that moment on
    };

    void readEvent(const std::string& component);
    void readMoved(icalproperty* stands, Source source);
    void place(const Moved& moved);
    bool isNewest(const Source& source) const;
    std::string nameOf(const CalendarEvent& event, Date occurrence, bool isDay);
    std::optional<Source> sourceOf(icalcomponent* event);
    void setEnd(icalcomponent* event, Source& source);
    void expand(const std::string& component);
    std::set<Date> exceptions(icalcomponent* event, const Source& source);
    void addRule(icalproperty* property, const Source& source, std::set<Date>& starts);
    void addDates(icalcomponent* event, std::set<Date>& starts);
    void occur(const Source& source, Date start);
    void add(CalendarEvent event);
    Date occurrenceOf(const Source& series, icaltimetype time, const std::string& zone);
    Date momentOf(icalproperty* property, const icaltimetype& time);
    icaltimetype earliest(const Source& source) const;
    bool isTimeUp() const;
    void complain(const char* what);

    Date from_;
    Date to_;
    Wall wall_;
    std::vector<CalendarEvent> events_;
    // Of this file; the maps by identifier.
    std::vector<Source> single_;         ///< that touch the stretch of time
    std::vector<std::string> recurring_; ///< components
    std::map<std::string, Source, std::less<>> series_;
    std::vector<Moved> moved_;
    std::map<std::string, Overrides, std::less<>> overrides_;
    std::map<std::string, int, std::less<>> newest_; ///< sequences above 0, by version
    std::clock_t began_ = std::clock();              ///< by the processor time of this process
    std::clock_t textBegan_ = 0;
    std::string problem_;
};

} // namespace velmora
