// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ical/Wall.h"

#include "base/Handle.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ctime>
#include <filesystem>

namespace velmora {

namespace {

using Component = Handle<icalcomponent, icalcomponent_free>;

constexpr std::size_t maximumZones = 200; ///< that one file defines
constexpr std::size_t maximumNames = 1'000;

/// Whether the system has a zone of that name: a plain path below its folder.
bool isSystemZone(std::string_view name)
{
    const auto isPlain = [](char one) {
        return std::isalnum(static_cast<unsigned char>(one)) ||
               std::string_view("/_+-").find(one) != std::string_view::npos;
    };
    if (name.empty() || name.size() > 64 || name.front() == '/' || !std::ranges::all_of(name, isPlain))
        return false;
    std::error_code error;
    return std::filesystem::is_regular_file(std::filesystem::path("/usr/share/zoneinfo") / name, error);
}

/// Programs put a path of their own before the name: "/example.org/20190914_1/Europe/Berlin".
std::string systemName(std::string_view zone)
{
    while (!isSystemZone(zone)) {
        const auto slash = zone.find('/');
        if (slash == zone.npos) return {};
        zone.remove_prefix(slash + 1);
    }
    return std::string(zone);
}

/// Whether the zone's rules are worked out quickly: a rule a second would take for ever.
bool isCheap(icalcomponent* zone)
{
    int parts = 0;
    for (auto* part = icalcomponent_get_first_component(zone, ICAL_ANY_COMPONENT); part;
         part = icalcomponent_get_next_component(zone, ICAL_ANY_COMPONENT)) {
        if (++parts > 100) return false;
        const auto kind = ICAL_RRULE_PROPERTY;
        for (auto* rule = icalcomponent_get_first_property(part, kind); rule;
             rule = icalcomponent_get_next_property(part, kind))
            if (const auto found = icalproperty_get_rrule(rule);
                found.freq != ICAL_YEARLY_RECURRENCE || found.rscale)
                return false;
    }
    return true;
}

std::tm partsOf(const icaltimetype& time)
{
    std::tm parts{};
    parts.tm_year = time.year - 1900;
    parts.tm_mon = time.month - 1;
    parts.tm_mday = time.day;
    parts.tm_hour = time.is_date ? 0 : time.hour;
    parts.tm_min = time.is_date ? 0 : time.minute;
    parts.tm_sec = time.is_date ? 0 : time.second;
    parts.tm_isdst = -1; // whichever holds at that time
    return parts;
}

void freeZone(icaltimezone* zone)
{
    icaltimezone_free(zone, 1);
}

} // namespace

Wall::Wall()
{
    if (const char* home = std::getenv("TZ")) {
        home_ = home;
        isHomeSet_ = true;
    }
    tzset();
}

Wall::~Wall()
{
    switchTo("");
}

void Wall::switchTo(const std::string& zone)
{
    if (zone == current_) return;
    current_ = zone;
    if (!zone.empty())
        setenv("TZ", zone.c_str(), 1);
    else if (isHomeSet_)
        setenv("TZ", home_.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

void Wall::define(const std::string& component)
{
    if (custom_.size() >= maximumZones) return;
    Component parsed(icalparser_parse_string(component.c_str()));
    if (!parsed || icalcomponent_isa(parsed.get()) != ICAL_VTIMEZONE_COMPONENT || !isCheap(parsed.get()))
        return;
    Zone zone(icaltimezone_new(), freeZone);
    if (!zone || !icaltimezone_set_component(zone.get(), parsed.get())) return;
    static_cast<void>(parsed.release()); // it is the zone's now
    const char* name = icaltimezone_get_tzid(zone.get());
    if (name) custom_.insert_or_assign(name, zone);
}

Date Wall::moment(const icaltimetype& time, const std::string& zone)
{
    if (icaltime_is_utc(time)) {
        auto parts = partsOf(time);
        return Date::fromUnix(static_cast<double>(timegm(&parts)));
    }
    if (time.is_date || zone.empty()) return systemMoment(time, "");
    const auto custom = custom_.find(zone);
    if (custom != custom_.end() && !isSystemZone(zone))
        return Date::fromUnix(static_cast<double>(icaltime_as_timet_with_zone(time, custom->second.get())));
    auto known = names_.find(zone);
    if (known == names_.end()) {
        if (names_.size() >= maximumNames) names_.clear();
        known = names_.emplace(zone, systemName(zone)).first;
    }
    return systemMoment(time, known->second);
}

std::string Wall::dayOf(Date moment)
{
    switchTo("");
    const auto seconds = static_cast<std::time_t>(moment.unixSeconds());
    std::tm parts{};
    char text[16];
    if (!localtime_r(&seconds, &parts) || !std::strftime(text, sizeof text, "%Y%m%d", &parts)) return {};
    return text;
}

Date Wall::daysLater(Date midnight, int days)
{
    switchTo("");
    const auto seconds = static_cast<std::time_t>(midnight.unixSeconds());
    std::tm parts{};
    if (!localtime_r(&seconds, &parts)) return midnight;
    parts.tm_mday += days;
    parts.tm_isdst = -1;
    return Date::fromUnix(static_cast<double>(std::mktime(&parts)));
}

Date Wall::systemMoment(const icaltimetype& time, const std::string& zone)
{
    switchTo(zone);
    auto parts = partsOf(time);
    return Date::fromUnix(static_cast<double>(std::mktime(&parts)));
}

} // namespace velmora
