// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ical/EventReader.h"

#include "base/Handle.h"
#include "base/Saturate.h"
#include "ical/ContentLines.h"
#include "wire/CalendarReport.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace velmora {

namespace {

using Component = Handle<icalcomponent, icalcomponent_free>;
using Iterator = Handle<icalrecur_iterator, icalrecur_iterator_free>;

// Of the processor's time; what is no rule is read all the same.
constexpr std::clock_t patienceWithText = 3 * CLOCKS_PER_SEC;
constexpr std::clock_t patienceWithAll = 12 * CLOCKS_PER_SEC;
constexpr int maximumDates = 5'000; ///< that one event lists
constexpr int maximumRules = 4;     ///< of one event
/// Occurrences that were moved by more than this are not looked for far from where they were.
constexpr double farthestMove = 7 * duration::day;

std::string textOf(icalcomponent* event, icalproperty_kind kind)
{
    auto* property = icalcomponent_get_first_property(event, kind);
    const char* text = property ? icalvalue_get_text(icalproperty_get_value(property)) : nullptr;
    return text ? text : "";
}

/// Calls `use` for each property of the kind, `limit` at most.
template <typename Use>
void forEach(icalcomponent* event, icalproperty_kind kind, int limit, Use&& use)
{
    auto* property = icalcomponent_get_first_property(event, kind);
    for (int i = 0; property && i < limit; ++i) {
        use(property);
        property = icalcomponent_get_next_property(event, kind);
    }
}

std::string zoneOf(icalproperty* property)
{
    auto* parameter = icalproperty_get_first_parameter(property, ICAL_TZID_PARAMETER);
    const char* zone = parameter ? icalparameter_get_tzid(parameter) : nullptr;
    return zone ? zone : "";
}

bool isSane(const icaltimetype& time)
{
    return !icaltime_is_null_time(time) && time.year >= 1900 && time.year <= 2200;
}

bool isGiven(const short* values)
{
    return values[0] != ICAL_RECURRENCE_ARRAY_MAX;
}

/// What could keep the library busy for minutes in search of one occurrence is no rule that a person makes.
bool isCheap(const icalrecurrencetype& rule)
{
    if (rule.rscale || rule.interval < 1 || rule.interval > 5'000) return false;
    if (rule.freq == ICAL_HOURLY_RECURRENCE)
        return !isGiven(rule.by_month) && !isGiven(rule.by_month_day) && !isGiven(rule.by_year_day) &&
               !isGiven(rule.by_week_no) && !isGiven(rule.by_day) && !isGiven(rule.by_hour) &&
               !isGiven(rule.by_set_pos);
    return rule.freq == ICAL_DAILY_RECURRENCE || rule.freq == ICAL_WEEKLY_RECURRENCE ||
           rule.freq == ICAL_MONTHLY_RECURRENCE || rule.freq == ICAL_YEARLY_RECURRENCE;
}

/// Of a date its last second, any other time as it is.
icaltimetype endOfDay(icaltimetype time)
{
    if (!time.is_date) return time;
    time.is_date = 0;
    time.hour = 23;
    time.minute = time.second = 59;
    return time;
}

/// The parts of the moment on the clock at Greenwich, as good as any where days do not matter.
icaltimetype aboutAt(Date moment, bool isDate)
{
    return icaltime_from_timet_with_zone(static_cast<std::time_t>(moment.unixSeconds()), isDate ? 1 : 0,
                                         nullptr);
}

} // namespace

std::string EventReader::read(std::string_view text)
{
    problem_.clear();
    textBegan_ = std::clock();
    single_.clear();
    recurring_.clear();
    series_.clear();
    moved_.clear();
    overrides_.clear();
    newest_.clear();
    wall_.beginFile();
    const ComponentSink zones{.event = [](const auto&) {},
                              .zone = [this](const auto& zone) { wall_.define(zone); }};
    const ComponentSink events{.event = [this](const auto& event) { readEvent(event); },
                               .zone = [](const auto&) {}};
    if (text.find("VTIMEZONE") != text.npos) splitComponents(text, zones); // they may come after the events
    if (!splitComponents(text, events)) complain("a component has no end, or is too long");
    for (const auto& moved : moved_) place(moved);
    for (auto& single : single_)
        if (isNewest(single)) add(std::move(single.event));
    for (const auto& component : recurring_) expand(component);
    return problem_;
}

/// A rule may keep the library busy for a moment before it gives its first occurrence, or none.
bool EventReader::isTimeUp() const
{
    const auto now = std::clock();
    return now - textBegan_ > patienceWithText || now - began_ > patienceWithAll;
}

void EventReader::complain(const char* what)
{
    if (problem_.empty()) problem_ = what;
}

void EventReader::readEvent(const std::string& text)
{
    const Component event(icalparser_parse_string(text.c_str()));
    if (!event || icalcomponent_isa(event.get()) != ICAL_VEVENT_COMPONENT)
        return complain("an event is no event");
    auto source = sourceOf(event.get());
    if (!source) return complain("an event has no start");
    if (source->sequence > 0) {
        auto& newest = newest_[source->version];
        newest = std::max(newest, source->sequence);
    }
    if (auto* stands = icalcomponent_get_first_property(event.get(), ICAL_RECURRENCEID_PROPERTY)) {
        readMoved(stands, std::move(*source));
    } else if (icalcomponent_get_first_property(event.get(), ICAL_RRULE_PROPERTY) ||
               icalcomponent_get_first_property(event.get(), ICAL_RDATE_PROPERTY)) {
        if (source->isCancelled) return;
        recurring_.push_back(text);
        series_.insert_or_assign(source->event.identifier, std::move(*source));
    } else if (!source->isCancelled && source->event.touches(from_, to_)) {
        auto& one = source->event;
        if (one.identifier.empty()) one.identifier = nameOf(one, one.start, one.isAllDay);
        single_.push_back(std::move(*source));
    }
}

void EventReader::readMoved(icalproperty* stands, Source source)
{
    const auto original = icalproperty_get_recurrenceid(stands);
    if (!isSane(original)) return complain("an occurrence was moved from no time");
    auto* range = icalproperty_get_first_parameter(stands, ICAL_RANGE_PARAMETER);
    const bool isForAllLater = range && icalparameter_get_range(range) == ICAL_RANGE_THISANDFUTURE;
    moved_.push_back({std::move(source), original, zoneOf(stands), isForAllLater});
}

void EventReader::place(const Moved& moved)
{
    if (!isNewest(moved.source)) return;
    const auto found = series_.find(moved.source.event.identifier);
    const Source& series = found == series_.end() ? moved.source : found->second;
    const Date moment = occurrenceOf(series, moved.original, moved.zone);
    auto& overrides = overrides_[moved.source.event.identifier];
    overrides.moments.insert(moment);
    if (moved.isForAllLater && std::abs(moved.source.event.start - moment) <= farthestMove)
        overrides.later.insert_or_assign(moment, moved.source);
    if (moved.source.isCancelled) return;
    CalendarEvent event = moved.source.event;
    event.identifier = nameOf(event, moment, moved.original.is_date && series.event.isAllDay);
    add(std::move(event));
}

/// Of the versions of an event that a text has, the one with the highest sequence counts.
bool EventReader::isNewest(const Source& source) const
{
    const auto found = newest_.find(source.version);
    return found == newest_.end() || source.sequence >= found->second;
}

/// An occurrence is named by when it was to be, a day alike wherever this machine is. That comes first, since
/// long names are cut.
std::string EventReader::nameOf(const CalendarEvent& event, Date occurrence, bool isDay)
{
    const auto when = isDay ? wall_.dayOf(occurrence) : std::to_string(truncated(occurrence.unixSeconds()));
    return when + " " + (event.identifier.empty() ? event.title.value_or("") : event.identifier);
}

std::optional<EventReader::Source> EventReader::sourceOf(icalcomponent* event)
{
    auto* begin = icalcomponent_get_first_property(event, ICAL_DTSTART_PROPERTY);
    if (!begin) return std::nullopt;
    Source source{.start = icalproperty_get_dtstart(begin), .zone = zoneOf(begin)};
    if (!isSane(source.start)) return std::nullopt;
    source.event.identifier = textOf(event, ICAL_UID_PROPERTY);
    if (icalcomponent_get_first_property(event, ICAL_SUMMARY_PROPERTY))
        source.event.title = textOf(event, ICAL_SUMMARY_PROPERTY);
    source.event.location = textOf(event, ICAL_LOCATION_PROPERTY);
    source.event.isAllDay = source.start.is_date != 0;
    source.event.start = wall_.moment(source.start, source.zone);
    source.isCancelled = icalcomponent_get_status(event) == ICAL_STATUS_CANCELLED;
    source.version = source.event.identifier;
    if (auto* stands = icalcomponent_get_first_property(event, ICAL_RECURRENCEID_PROPERTY))
        source.version.append("\n").append(icaltime_as_ical_string(icalproperty_get_recurrenceid(stands)));
    if (!source.event.identifier.empty()) source.sequence = icalcomponent_get_sequence(event);
    setEnd(event, source);
    return source;
}

void EventReader::setEnd(icalcomponent* event, Source& source)
{
    const bool isAllDay = source.event.isAllDay;
    double length = 0;
    auto* end = icalcomponent_get_first_property(event, ICAL_DTEND_PROPERTY);
    auto* lasts = icalcomponent_get_first_property(event, ICAL_DURATION_PROPERTY);
    if (const auto until = end ? icalproperty_get_dtend(end) : icaltime_null_time(); isSane(until)) {
        length = momentOf(end, until) - source.event.start;
    } else if (lasts) {
        const auto value = icalproperty_get_duration(lasts);
        length = value.is_neg ? 0 : icaldurationtype_as_int(value);
    }
    // A day is 23 or 25 hours long where the clocks change.
    if (isAllDay) source.days = static_cast<int>(std::clamp(std::round(length / duration::day), 1.0, 1e5));
    source.event.end = isAllDay ? wall_.daysLater(source.event.start, source.days)
                                : source.event.start + std::max(length, 0.0);
}

/// A date names the occurrence of that day.
Date EventReader::occurrenceOf(const Source& series, icaltimetype time, const std::string& zone)
{
    if (!time.is_date || series.event.isAllDay) return wall_.moment(time, zone);
    auto start = series.start;
    start.year = time.year;
    start.month = time.month;
    start.day = time.day;
    return wall_.moment(start, series.zone);
}

Date EventReader::momentOf(icalproperty* property, const icaltimetype& time)
{
    return wall_.moment(time, zoneOf(property));
}

void EventReader::expand(const std::string& text)
{
    const Component event(icalparser_parse_string(text.c_str()));
    const auto source = event ? sourceOf(event.get()) : std::nullopt;
    if (!source || !isNewest(*source)) return;
    std::set<Date> starts{source->event.start};
    forEach(event.get(), ICAL_RRULE_PROPERTY, maximumRules,
            [&](auto* rule) { addRule(rule, *source, starts); });
    addDates(event.get(), starts);
    const auto left = exceptions(event.get(), *source);
    for (const auto start : starts)
        if (!left.contains(start)) occur(*source, start);
}

/// The earliest start that could matter, for the library to begin with: a day early, wherever its place is.
icaltimetype EventReader::earliest(const Source& source) const
{
    const double length = source.event.end - source.event.start;
    auto time = aboutAt(from_ + -(length + 2 * duration::day + farthestMove), source.event.isAllDay);
    time.hour = source.start.hour;
    time.minute = source.start.minute;
    time.second = source.start.second;
    return time;
}

void EventReader::addRule(icalproperty* property, const Source& source, std::set<Date>& starts)
{
    if (isTimeUp()) return complain("its rules take too long, and some were passed over");
    auto rule = icalproperty_get_rrule(property);
    if (!isCheap(rule)) return complain("a rule was passed over, which no calendar needs");
    // The library compares an end at Greenwich with a start elsewhere.
    const auto until = rule.until;
    rule.until = icaltime_null_time();
    const Iterator iterator(icalrecur_iterator_new(rule, source.start));
    if (!iterator) return complain("a rule is broken");
    const Date last = isSane(until) ? wall_.moment(endOfDay(until), source.zone) : to_ + farthestMove;
    const auto first = earliest(source);
    const bool isOld = icaltime_compare(first, source.start) > 0;
    // The library counts from there: right for days, but not for hours.
    if (isOld && rule.count == 0 && rule.freq != ICAL_HOURLY_RECURRENCE)
        icalrecur_iterator_set_start(iterator.get(), first);
    while (!isTimeUp()) {
        const auto next = icalrecur_iterator_next(iterator.get());
        if (icaltime_is_null_time(next)) return;
        if (isOld && icaltime_compare(next, first) < 0) continue;
        const Date start = wall_.moment(next, source.zone);
        if (start > std::min(last, to_ + farthestMove)) return;
        starts.insert(start);
    }
    complain("its rules take too long, and one was not followed to its end");
}

void EventReader::addDates(icalcomponent* event, std::set<Date>& starts)
{
    forEach(event, ICAL_RDATE_PROPERTY, maximumDates, [&](auto* property) {
        const auto date = icalproperty_get_rdate(property);
        const auto& time = icaltime_is_null_time(date.time) ? date.period.start : date.time;
        if (isSane(time)) starts.insert(momentOf(property, time));
    });
}

/// The occurrences that were left out, and those that others stand for.
std::set<Date> EventReader::exceptions(icalcomponent* event, const Source& source)
{
    std::set<Date> left;
    forEach(event, ICAL_EXDATE_PROPERTY, maximumDates, [&](auto* property) {
        const auto time = icalproperty_get_exdate(property);
        if (isSane(time)) left.insert(occurrenceOf(source, time, zoneOf(property)));
    });
    if (const auto found = overrides_.find(source.event.identifier); found != overrides_.end())
        left.insert(found->second.moments.begin(), found->second.moments.end());
    return left;
}

/// As its event says, or as the last override that counts for all later ones.
void EventReader::occur(const Source& source, Date start)
{
    const Source* as = &source;
    double move = 0;
    if (const auto found = overrides_.find(source.event.identifier); found != overrides_.end()) {
        const auto& later = found->second.later;
        if (const auto next = later.upper_bound(start); next != later.begin()) {
            const auto& [moment, instead] = *std::prev(next);
            as = &instead;
            move = instead.event.start - moment;
        }
    }
    if (as->isCancelled) return;
    CalendarEvent event = as->event;
    event.identifier = nameOf(event, start, source.event.isAllDay);
    event.start = start + move;
    event.end = event.isAllDay ? wall_.daysLater(event.start, as->days)
                               : event.start + (as->event.end - as->event.start);
    add(std::move(event));
}

void EventReader::add(CalendarEvent event)
{
    if (!event.touches(from_, to_)) return;
    if (events_.size() >= wire::calendar::maximumEvents) return complain("there are too many events");
    events_.push_back(std::move(event));
}

} // namespace velmora
