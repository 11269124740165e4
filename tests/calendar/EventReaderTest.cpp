// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ical/EventReader.h"

#include "TemporaryFolder.h"
#include "base/WholeFile.h"
#include "files/CalendarFolders.h"
#include "wire/CalendarReport.h"

#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sys/stat.h>

namespace velmora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Where this machine is, while it lives.
struct Place {
    explicit Place(const char* zone) { go(zone); }
    ~Place() { go("UTC"); }
    static void go(const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
    }
};

Date utc(const char* text)
{
    return Date::fromUnix(static_cast<double>(icaltime_as_timet(icaltime_from_string(text))));
}

std::string shown(Date date)
{
    const auto seconds = static_cast<std::time_t>(date.unixSeconds());
    char text[32];
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::strftime(text, sizeof text, "%m%dT%H%M", &parts);
    return text;
}

/// Title, start and end (UTC) of what `events`, the lines of VEVENTs, have in the day from `from`.
std::vector<std::string> eventsOn(const char* from, const std::string& components)
{
    EventReader reader(utc(from), utc(from) + duration::day);
    reader.read("BEGIN:VCALENDAR\n" + components + "END:VCALENDAR\n");
    auto events = reader.events();
    wire::calendar::tidy(events);
    std::vector<std::string> result;
    for (const auto& event : events)
        result.push_back(event.title.value_or("-") + " " + shown(event.start) + "-" + shown(event.end) +
                         (event.isAllDay ? " all day" : ""));
    return result;
}

std::string event(const std::string& lines)
{
    return "BEGIN:VEVENT\n" + lines + "END:VEVENT\n";
}

TEST(EventReaderTest, TimesAreThoseOfTheirPlace)
{
    const Place berlin("Europe/Berlin");
    const auto on = [](const std::string& lines) {
        return eventsOn("20260705T000000Z", event("UID:1\nSUMMARY:x\n" + lines));
    };
    EXPECT_THAT(on("DTSTART:20260705T080000Z\nDTEND:20260705T090000Z\n"),
                ElementsAre("x 0705T0800-0705T0900"));
    EXPECT_THAT(on("DTSTART:20260705T080000\nDURATION:PT1H30M\n"), ElementsAre("x 0705T0600-0705T0730"))
        << "floating";
    EXPECT_THAT(on("DTSTART;TZID=America/New_York:20260705T080000\n"), ElementsAre("x 0705T1200-0705T1200"));
    EXPECT_THAT(on("DTSTART;TZID=/example.org/2019_1/Asia/Tokyo:20260705T200000\n"),
                ElementsAre("x 0705T1100-0705T1100"));
    EXPECT_THAT(on("DTSTART;TZID=../../etc/passwd:20260705T080000\n"), ElementsAre("x 0705T0600-0705T0600"));
    EXPECT_THAT(on("DTSTART;VALUE=DATE:20260705\n"), ElementsAre("x 0704T2200-0705T2200 all day"));
    EXPECT_THAT(on("DTSTART;VALUE=DATE:20260701\nDTEND;VALUE=DATE:20260706\n"),
                ElementsAre("x 0630T2200-0705T2200 all day"));
    EXPECT_THAT(on("DTSTART:20260704T220000Z\nDTEND:20260705T003000Z\n"),
                ElementsAre("x 0704T2200-0705T0030"))
        << "under way";
    EXPECT_THAT(on("DTSTART:20260704T220000Z\nDTEND:20260705T000000Z\n"), IsEmpty()) << "over";
    EXPECT_THAT(on("DTSTART:20260706T000000Z\n"), IsEmpty()) << "later";
    EXPECT_THAT(on("DTSTART:20260705T080000Z\nSTATUS:CANCELLED\n"), IsEmpty());
    EXPECT_THAT(on("DTSTART:20260705T080000Z\nDTEND:20260704T080000Z\n"),
                ElementsAre("x 0705T0800-0705T0800"));
    const Place honolulu("Pacific/Honolulu");
    EXPECT_THAT(on("DTSTART;VALUE=DATE:20260705\n"), ElementsAre("x 0705T1000-0706T1000 all day"));
    const Place auckland("Pacific/Auckland");
    EXPECT_THAT(on("DTSTART;VALUE=DATE:20260705\nRRULE:FREQ=YEARLY\n"),
                ElementsAre("x 0704T1200-0705T1200 all day"));
    EXPECT_THAT(
        eventsOn("20260927T000000Z", event("SUMMARY:x\nDTSTART;VALUE=DATE:20200926\nRRULE:FREQ=DAILY\n")),
        ElementsAre("x 0926T1200-0927T1100 all day", "x 0927T1100-0928T1100 all day"))
        << "a day is 23 hours long where the clocks change";
}

TEST(EventReaderTest, AZoneThatAFileDefinesCountsWhereTheSystemHasNone)
{
    const Place home("UTC");
    const std::string zone = "BEGIN:VTIMEZONE\nTZID:Customized\nBEGIN:STANDARD\nDTSTART:19700101T000000\n"
                             "TZOFFSETFROM:+0300\nTZOFFSETTO:+0300\nEND:STANDARD\nEND:VTIMEZONE\n";
    const auto meeting = event("UID:1\nSUMMARY:x\nDTSTART;TZID=Customized:20260705T080000\n");
    EXPECT_THAT(eventsOn("20260705T000000Z", meeting + zone), ElementsAre("x 0705T0500-0705T0500"));
    EXPECT_THAT(eventsOn("20260705T000000Z", meeting), ElementsAre("x 0705T0800-0705T0800"));
    const auto own = std::regex_replace(meeting + zone, std::regex("Customized"), "My/Europe/Berlin");
    EXPECT_THAT(eventsOn("20260705T000000Z", own), ElementsAre("x 0705T0500-0705T0500"));
    auto endless = zone;
    endless.insert(endless.find("END:STANDARD"), "RRULE:FREQ=SECONDLY\n");
    EXPECT_THAT(eventsOn("20260705T000000Z", meeting + endless), ElementsAre("x 0705T0800-0705T0800"));
}

TEST(EventReaderTest, RecurringEventsRecurWithTheirExceptions)
{
    const Place berlin("Europe/Berlin");
    const std::string weekly =
        "UID:1\nSUMMARY:x\nDTSTART;TZID=Europe/Berlin:20260105T090000\nDURATION:PT1H\n";
    const auto monday = "20260706T000000Z"; // the 27th
    const auto on = [&](const std::string& rest) { return eventsOn(monday, event(weekly + rest)); };
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY\n"), ElementsAre("x 0706T0700-0706T0800")) << "in summer time";
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY;COUNT=27\n"), ElementsAre("x 0706T0700-0706T0800"));
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY;COUNT=26\n"), IsEmpty());
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY;INTERVAL=2\n"), ElementsAre("x 0706T0700-0706T0800"));
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY;INTERVAL=4\n"), IsEmpty());
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY;UNTIL=20260706T070000Z\n"), ElementsAre("x 0706T0700-0706T0800"));
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY;UNTIL=20260706T065959Z\n"), IsEmpty());
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY;UNTIL=20260706\n"), ElementsAre("x 0706T0700-0706T0800"));
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY;UNTIL=20260705\n"), IsEmpty());
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY\nEXDATE;TZID=Europe/Berlin:20260629T090000,20260706T090000\n"),
                IsEmpty());
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY\nEXDATE;VALUE=DATE:20260706\n"), IsEmpty());
    EXPECT_THAT(on("RDATE;TZID=Europe/Berlin:20260706T110000,20260706T130000\nRDATE:20260706T200000Z\n"),
                ElementsAre("x 0706T0900-0706T1000", "x 0706T1100-0706T1200", "x 0706T2000-0706T2100"));
    EXPECT_THAT(on("RRULE:FREQ=WEEKLY\nSTATUS:CANCELLED\n"), IsEmpty());
    EXPECT_THAT(on("RRULE:FREQ=MINUTELY\n"), IsEmpty());
    EXPECT_THAT(on("RRULE:FREQ=HOURLY;BYMONTH=2;BYMONTHDAY=30\n"), IsEmpty());
    EXPECT_THAT(on("RRULE:FREQ=HOURLY;INTERVAL=12\n"),
                ElementsAre("x 0706T0700-0706T0800", "x 0706T1900-0706T2000"));
    EXPECT_THAT(on("RRULE:nonsense\n"), IsEmpty());
}

TEST(EventReaderTest, WhatWasMovedIsWhereItWasMovedTo)
{
    const Place berlin("Europe/Berlin");
    const auto master = event(
        "UID:1\nSUMMARY:x\nDTSTART;TZID=Europe/Berlin:20260105T090000\nDURATION:PT1H\nRRULE:FREQ=WEEKLY\n");
    const auto monday = "20260706T000000Z";
    const auto moved = [](const std::string& id, const std::string& rest) {
        return event("UID:1\nRECURRENCE-ID" + id + "\n" + rest);
    };
    const std::string july6 = ";TZID=Europe/Berlin:20260706T090000";
    EXPECT_THAT(eventsOn(monday, moved(july6, "SUMMARY:y\nDTSTART:20260706T150000Z\n") + master),
                ElementsAre("y 0706T1500-0706T1500"));
    EXPECT_THAT(eventsOn(monday, moved(":20260706T070000Z", "DTSTART:20260707T150000Z\n") + master),
                IsEmpty());
    EXPECT_THAT(eventsOn(monday, master + moved(";TZID=Europe/Berlin:20260713T090000",
                                                "SUMMARY:y\nDTSTART:20260706T150000Z\n")),
                ElementsAre("x 0706T0700-0706T0800", "y 0706T1500-0706T1500"));
    EXPECT_THAT(eventsOn(monday, master + moved(july6, "DTSTART:20260706T150000Z\nSTATUS:CANCELLED\n")),
                IsEmpty());
    const std::string later = ";RANGE=THISANDFUTURE;TZID=Europe/Berlin:20260601T090000";
    EXPECT_THAT(
        eventsOn(monday,
                 master +
                     moved(later, "SUMMARY:y\nDTSTART;TZID=Europe/Berlin:20260602T080000\nDURATION:PT2H\n")),
        IsEmpty());
    EXPECT_THAT(
        eventsOn("20260707T000000Z",
                 master +
                     moved(later, "SUMMARY:y\nDTSTART;TZID=Europe/Berlin:20260602T080000\nDURATION:PT2H\n")),
        ElementsAre("y 0707T0600-0707T0800"));
}

TEST(EventReaderTest, AnOccurrenceKeepsItsIdentifierWhereverItIs)
{
    const auto identifiers = [](const std::string& components) {
        EventReader reader(utc("20260705T000000Z"), utc("20260707T120000Z"));
        reader.read(components);
        std::set<std::string> result;
        for (const auto& one : reader.events()) result.insert(one.identifier);
        return result;
    };
    const auto single = event("UID:a\nDTSTART:20260706T080000Z\n");
    const auto later = event("UID:a\nSEQUENCE:1\nDTSTART:20260707T080000Z\n");
    EXPECT_THAT(identifiers(single), ElementsAre("a"));
    EXPECT_THAT(identifiers(later), ElementsAre("a"));
    EXPECT_THAT(eventsOn("20260706T000000Z", later + single), IsEmpty())
        << "of two versions the later counts";
    const auto days = event("UID:b\nDTSTART;VALUE=DATE:20250706\nRRULE:FREQ=YEARLY\n");
    for (const auto* zone : {"UTC", "Asia/Tokyo", "America/New_York"}) {
        const Place home(zone);
        EXPECT_THAT(identifiers(days), ElementsAre("20260706 b"));
    }
    const auto daily = event("UID:c\nDTSTART:20260705T080000Z\nRRULE:FREQ=DAILY;COUNT=2\n");
    const auto all = identifiers(daily);
    EXPECT_EQ(all.size(), 2U);
    for (const auto* id : {":20260705T080000Z", ";VALUE=DATE:20260705"}) {
        const auto moved = event("UID:c\nRECURRENCE-ID" + std::string(id) + "\nDTSTART:20260706T220000Z\n");
        EXPECT_EQ(identifiers(moved + daily), all);
        EXPECT_THAT(eventsOn("20260705T000000Z", daily + moved), IsEmpty());
    }
}

/// What begins in the middle of a rule finds the same as what follows it from its start.
TEST(EventReaderTest, AnOldRuleRecursAsIfFollowedFromItsStart)
{
    const Place home("UTC");
    const char* rules[] = {"DAILY",
                           "DAILY;INTERVAL=7",
                           "DAILY;BYDAY=MO,WE",
                           "DAILY;INTERVAL=3;BYMONTH=1,7",
                           "WEEKLY;BYDAY=TU,TH",
                           "WEEKLY;INTERVAL=3;BYDAY=MO,SU;WKST=SU",
                           "MONTHLY",
                           "MONTHLY;BYDAY=-1FR",
                           "MONTHLY;INTERVAL=5;BYMONTHDAY=-1,15",
                           "MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1",
                           "YEARLY",
                           "YEARLY;INTERVAL=3",
                           "YEARLY;BYMONTH=7;BYDAY=1MO",
                           "YEARLY;BYYEARDAY=200,-1",
                           "YEARLY;BYWEEKNO=28;BYDAY=WE",
                           "HOURLY;INTERVAL=7"};
    const auto start = icaltime_from_string("20100131T100000");
    for (const std::string rule : rules) {
        SCOPED_TRACE(rule);
        std::set<Date> expected;
        auto* iterator =
            icalrecur_iterator_new(icalrecurrencetype_from_string(("FREQ=" + rule).c_str()), start);
        const Date from = utc("20250601T000000Z");
        const Date to = utc("20260901T000000Z");
        for (auto next = icalrecur_iterator_next(iterator); next.year < 2027 && !icaltime_is_null_time(next);
             next = icalrecur_iterator_next(iterator))
            if (const Date at = Date::fromUnix(static_cast<double>(icaltime_as_timet(next)));
                at >= from && at < to)
                expected.insert(at);
        icalrecur_iterator_free(iterator);
        EventReader reader(from, to);
        EXPECT_EQ(reader.read(event("UID:1\nDTSTART:20100131T100000Z\nRRULE:FREQ=" + rule + "\n")), "");
        std::set<Date> found;
        for (const auto& one : reader.events()) found.insert(one.start);
        EXPECT_EQ(found, expected);
    }
}

TEST(EventReaderTest, OneBrokenComponentCostsNoOther)
{
    const Place home("UTC");
    const auto good =
        event("UID:2\r\nSUMMARY:Flight\\, \r\n  late\r\nLOCATION:Gate\r\nDTSTART:20260705T080000Z\r\n"
              "BEGIN:VALARM\r\nSUMMARY:Alarm\r\nEND:VALARM\r\n");
    const std::string broken[] = {
        "BEGIN:VEVENT\nUID:1\nDTSTART:2026",
        "BEGIN:VEVENT\n",
        "END:VEVENT\nEND:VEVENT\n",
        event("UID:1\n"),
        event("DTSTART:99999999T999999Z\n"),
        event("DTSTART;VALUE=DATE:00000000\n"),
        event("SUMMARY:" + std::string(100'000, 'x') + "\nDTSTART:20260705T080000Z\n"),
        std::string("\0\xff\xfe\n:;\n=", 8) + "\n"};
    for (const auto& one : broken) {
        SCOPED_TRACE(one.substr(0, 40));
        EXPECT_THAT(eventsOn("20260705T000000Z", one + good),
                    ElementsAre("Flight,  late 0705T0800-0705T0800"));
    }
    EXPECT_THAT(eventsOn("20260705T000000Z", event("DTSTART:20260705T080000Z\n")),
                ElementsAre("- 0705T0800-0705T0800"));
    const auto attached = "ATTACH;ENCODING=BASE64;VALUE=BINARY:" + std::string(1'000'000, 'A') + "\n";
    EXPECT_EQ(eventsOn("20260705T000000Z", event("UID:1\n" + attached + "DTSTART:20260705T080000Z\n")).size(),
              1U);
}

TEST(CalendarFoldersTest, FilesAreFoundOnceAndWithinBounds)
{
    const TemporaryFolder root;
    namespace fs = std::filesystem;
    fs::create_directories(root.path() / "work/.hidden");
    fs::create_directories(root.path() / "trash");
    const auto write = [&](const char* name, std::string_view text = "x") {
        EXPECT_TRUE(writeWholeFile(root.path() / name, text)) << name;
    };
    write("work/a.ics");
    write("work/.hidden/b.ics");
    write("trash/c.ics");
    write("work/notes.txt");
    fs::create_directory_symlink(root.path(), root.path() / "work/loop");
    fs::create_symlink("a.ics", root.path() / "work/gone.ics");
    fs::create_symlink("/nowhere", root.path() / "work/nowhere.ics");
    ASSERT_EQ(mkfifo((root.path() / "work/pipe.ics").c_str(), 0600), 0);
    write("work/large.ics");
    fs::resize_file(root.path() / "work/large.ics", maximumFileBytes + 1);
    std::vector<std::string> files;
    std::vector<std::string> problems;
    CalendarFolders folders({.file = [&](const auto& file, const auto&) { files.push_back(file.filename()); },
                             .problem = [&](const auto& problem) { problems.push_back(problem); }});
    EXPECT_TRUE(folders.read(root.path()));
    EXPECT_TRUE(folders.read(root.path() / "work"));
    EXPECT_FALSE(folders.read(root.path() / "none"));
    EXPECT_THAT(files, testing::UnorderedElementsAre("a.ics", "gone.ics"));
    EXPECT_EQ(problems.size(), 3U);
}

} // namespace
} // namespace velmora
