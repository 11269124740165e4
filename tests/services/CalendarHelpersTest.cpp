// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/CalendarHelpers.h"

#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "base/WholeFile.h"

#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using Authorization = CalendarStore::Authorization;
namespace fs = std::filesystem;
namespace report = wire::calendar;

const Date from = Date::fromUnix(1'783'209'600); // 2026-07-05 00:00 UTC
const Date to = from + duration::day;

std::string event(const std::string& identifier, const std::string& hour, const std::string& title)
{
    return "BEGIN:VEVENT\nUID:" + identifier + "\nDTSTART:20260705T" + hour + "0000Z\nSUMMARY:" + title +
           "\nEND:VEVENT\n";
}

struct CalendarHelpersTest : testing::Test {
    TemporaryFolder root;
    RecordingLog log;
    CalendarHelpers::Setup setup{.files = VELMORA_BIN "/velmora-calendar",
                                 .service = {},
                                 .folders = {root.path() / "a", root.path() / "b"}};

    void put(const char* file, const std::string& text)
    {
        fs::create_directories((root.path() / file).parent_path());
        ASSERT_TRUE(writeWholeFile(root.path() / file, text));
    }
    /// A helper that does what its shell script says.
    fs::path script(const char* name, const std::string& text)
    {
        put(name, "#!/bin/sh\n" + text);
        fs::permissions(root.path() / name, fs::perms::owner_all);
        return root.path() / name;
    }
    static bool ask(CalendarHelpers& calendars, std::string* why = nullptr)
    {
        bool isGranted = false;
        calendars.permit();
        calendars.requestFullAccess([&](bool granted, const auto& error) {
            isGranted = granted;
            if (why) *why = error.value_or("");
        });
        return isGranted;
    }
    static auto all(CalendarHelpers& calendars, Date begin = from)
    {
        return calendars.events(begin, to, [](const auto&) { return true; });
    }
    static std::string titles(const std::optional<CalendarReading>& reading)
    {
        if (!reading) return "nothing";
        std::string all = reading->isWhole ? "" : "in part";
        for (const auto& one : reading->events) all += (all.empty() ? "" : ", ") + one.title.value_or("-");
        return all;
    }
};

TEST_F(CalendarHelpersTest, ReadsAllFoldersByStartAndWhatTheyShareOnce)
{
    CalendarHelpers calendars(setup, log);
    EXPECT_EQ(calendars.authorizationStatus(), Authorization::notDetermined);
    std::string why;
    EXPECT_FALSE(ask(calendars, &why));
    EXPECT_EQ(why, "there is no calendar on this computer");
    EXPECT_EQ(calendars.authorizationStatus(), Authorization::restricted);
    EXPECT_EQ(titles(all(calendars)), "nothing");
    setup.files = "/none/velmora-calendar";
    CalendarHelpers readerless(setup, log);
    EXPECT_FALSE(ask(readerless, &why));
    EXPECT_EQ(why, "/none/velmora-calendar is not installed");

    put("a/office/one.ics",
        event("1", "08", "Lunch") + event("2", "06", "Flight\\nto \xe2\x80\xae Lis\tbon\\\\"));
    put("b/two.ics",
        event("1", "08", "Lunch") + event("3", "07", "bad \xff text") + event("4", "09", "\xc3"));
    EXPECT_EQ(calendars.authorizationStatus(), Authorization::fullAccess) << "made since it was asked";
    EXPECT_TRUE(ask(calendars, &why));
    EXPECT_EQ(titles(all(calendars)), "Flight to  Lis bon\\, bad ? text, Lunch, ?");
    EXPECT_EQ(titles(calendars.events(from, to, [](const auto& one) { return one.title == "Lunch"; })),
              "Lunch");
    EXPECT_EQ(titles(calendars.events(to, to + duration::day, [](const auto&) { return true; })), "");
    put("b/three.ics", "BEGIN:VEVENT\nUID:9\n");
    for (int scan = 0; scan < 3; ++scan) all(calendars);
    EXPECT_EQ(log.count("three.ics is not understood in all"), 1U);
    calendars.relinquishAccess();
    calendars.requestFullAccess([](bool isGranted, const auto&) { EXPECT_FALSE(isGranted) << "too late"; });
    EXPECT_EQ(titles(all(calendars)), "nothing");
    EXPECT_EQ(calendars.authorizationStatus(), Authorization::notDetermined);
}

TEST_F(CalendarHelpersTest, AHelperThatMisbehavesCostsItsReadingAlone)
{
    fs::create_directory(root.path() / "a");
    const auto good = report::line({.identifier = "1", .title = "Trip", .start = from, .end = to});
    const std::string tell = "printf '%s' '" + good + "'\n";
    setup.patience = 500ms;
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"", "could not be run", "in part"},
        {tell + "exit 3\n", "ended with status 3", "in part"},
        {tell + "kill -9 $$\n", "was ended by signal 9", "in part"},
        {tell, "did not tell all", "in part"},
        {"exec sleep 100\n", "did not end in time and was killed", "in part"},
        {"exec >&-\nexec sleep 100\n", "did not end in time and was killed", "in part"},
        {"exec tr '\\0' x </dev/zero\n", "said too much and was killed", "in part"},
        {"echo; echo event; printf 'event\\tx\\t1\\n'; printf 'end\\t-1\\nend\\n\\0'\n", "did not tell all",
         "in part"},
        {tell + "printf 'problem\\tA file is odd.\\nend\\t1\\n'\nsleep 2 &\n", "A file is odd.", "Trip"},
    };
    for (const auto& [text, line, expected] : cases) {
        SCOPED_TRACE(text);
        setup.files = script("helper", text);
        if (text.empty()) put("helper", "no program");
        CalendarHelpers calendars(setup, log);
        ask(calendars);
        EXPECT_EQ(titles(all(calendars)), expected);
        EXPECT_GE(log.count(line), 1U);
    }
}

TEST_F(CalendarHelpersTest, TheServiceAloneIsAccessIfItHasCalendars)
{
    setup.service = script("service", "printf 'end\\t0\\n'\n");
    CalendarHelpers calendars(setup, log);
    EXPECT_FALSE(ask(calendars));
    script("service", "[ $1 -lt 1783209600 ] || printf "
                      "'event\\t1783209600\\t1783213200\\t0\\t1\\t5\\tTrip\\t\\n'\nprintf 'end\\t2\\n'\n");
    EXPECT_TRUE(ask(calendars));
    EXPECT_EQ(titles(all(calendars)), "Trip");
    put("a/one.ics", event("5", "00", "Trip") + event("6", "01", "Lunch"));
    EXPECT_EQ(titles(all(calendars)), "Trip, Lunch") << "what both tell counts once";
    put("a/one.ics", event("6", "01", "Lunch"));
    script("service", "exit 1\n");
    EXPECT_EQ(titles(all(calendars)), "in part, Trip, Lunch") << "what one of two knew stays";
    EXPECT_EQ(titles(all(calendars, from + duration::hour)), "in part, Lunch") << "until it is over";
    fs::remove(root.path() / "service");
    EXPECT_EQ(titles(all(calendars)), "Lunch") << "what is not there any more knows nothing";
}

TEST_F(CalendarHelpersTest, AReadingEndsWithTheLeave)
{
    fs::create_directory(root.path() / "a");
    setup.files = script("helper", "echo $$ >" + (root.path() / "id").string() + "\nexec sleep 1000\n");
    setup.patience = 1000s;
    CalendarHelpers calendars(setup, log);
    ASSERT_TRUE(ask(calendars));
    auto reading = std::async(std::launch::async, [&] { return all(calendars); });
    std::optional<std::string> id;
    while (!id || id->empty()) {
        std::this_thread::sleep_for(1ms);
        id = readWholeFile(root.path() / "id");
    }
    calendars.relinquishAccess();
    EXPECT_EQ(titles(reading.get()), "nothing");
    EXPECT_FALSE(fs::exists("/proc/" + id->substr(0, id->size() - 1))) << "it was killed, and reaped";
    EXPECT_EQ(log.count(), 0U) << "nothing went wrong";
}

TEST(CalendarReportTest, ComesThroughInPiecesOfAnySize)
{
    const CalendarEvent events[] = {{.identifier = "a\tb\\n",
                                     .title = "Line\none\\",
                                     .location = "",
                                     .start = from,
                                     .end = to,
                                     .isAllDay = true},
                                    {.location = "Gate\t5", .start = from, .end = from},
                                    {.title = std::string(10'000, '\n'), .start = from, .end = from}};
    std::string whole =
        std::string(100'000, 'x') + "\nevent\t5\t4\t0\t0\n" + report::problemLine("Tab\there");
    for (const auto& one : events) whole += report::line(one);
    whole += report::endLine(2);
    for (const std::size_t size : {std::size_t{1}, std::size_t{7}, whole.size()}) {
        report::Reader reader;
        for (std::size_t at = 0; at < whole.size(); at += size) {
            EXPECT_FALSE(reader.isWhole());
            reader.take(std::string_view(whole).substr(at, size));
        }
        EXPECT_TRUE(reader.isWhole());
        EXPECT_EQ(reader.calendars(), 2U);
        EXPECT_THAT(reader.problems(), testing::ElementsAre("Tab\there"));
        ASSERT_EQ(reader.events().size(), 3U);
        EXPECT_EQ(reader.events()[0], events[0]);
        EXPECT_EQ(reader.events()[1], events[1]);
        EXPECT_EQ(reader.events()[2].title, std::string(report::maximumTextBytes, '\n'));
    }
}

} // namespace
} // namespace velmora
