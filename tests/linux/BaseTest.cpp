// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ManualLoop.h"
#include "ManualQueue.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "base/CoreDumps.h"
#include "base/HostName.h"
#include "base/JournalLog.h"
#include "base/KernelVersion.h"
#include "base/PreferencesFile.h"
#include "base/UserName.h"
#include "base/Utf8.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmora {
namespace {

using namespace std::string_literals;

TEST(JournalLog, StandardErrorGetsOneLineACall)
{
    JournalLog log("velmora", JournalLog::Sink::standardError);
    testing::internal::CaptureStderr();
    log.warning("CalendarContextManager", "met \"A\nB\"");
    log.error("XPCClient", "second");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<4>app.velmora[CalendarContextManager]: met \"A\\nB\"\n"
              "<3>app.velmora[XPCClient]: second\n");
}

TEST(JournalLog, TextOfOthersCannotForgeLinesNorMoveTheCursor)
{
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"80 % \u00e9\U0001f50b", "80 % \u00e9\U0001f50b", "80 % \u00e9\U0001f50b"},
        {"a\r\n\tb\\", "a\\r\\n\\tb\\\\", "a\r\n\tb\\"},
        {"\x1b[2J\x7f", "\\x1b[2J\\x7f", "\x1b[2J\x7f"},
        {"\u009b2J", "\\xc2\\x9b2J", "\u009b2J"}, // a control character of two bytes
        {"a\0b"s, "a\\x00b", "a?b"},
        {"\xff\xc3", "\\xff\\xc3", "??"},                     // no lead byte; cut short
        {"\xc0\xaf", "\\xc0\\xaf", "??"},                     // overlong
        {"\xed\xa0\x80", "\\xed\\xa0\\x80", "???"},           // surrogate
        {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80", "????"}, // past the last character
        {"\U000bffff\ufdd0", "\U000bffff\ufdd0", "??"},       // noncharacters, which sd-bus refuses
    };
    for (const auto& [text, line, clean] : cases) {
        EXPECT_EQ(escapedLine(text), line);
        EXPECT_EQ(cleanUtf8(text), clean);
    }
}

TEST(HostName, IsWhatTheUserCallsTheMachine)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"PRETTY_HOSTNAME=desk\n", "desk"},
        {"ICON_NAME=x\n  PRETTY_HOSTNAME=\"Ann\\\"s \u2764 laptop\" \nX_PRETTY_HOSTNAME=no",
         "Ann\"s \u2764 laptop"},
        {"PRETTY_HOSTNAME='a\\b'c\nPRETTY_HOSTNAME=", ""}, // the last one counts
        {"PRETTY_HOSTNAME='a\\b'", "a\\b"},
        {"PRETTY_HOSTNAME=\"a\tb\xff\u202ec", "a b?c"},
    };
    for (const auto& [text, name] : cases) EXPECT_EQ(prettyHostName(text), name) << text;
    EXPECT_EQ(prettyHostName("PRETTY_HOSTNAME=" + std::string(63, 'x') + "\u20ac").size(), 63U);

    TemporaryFolder folder;
    folder.write("info", "PRETTY_HOSTNAME=here");
    setenv("VELMORA_MACHINE_INFO", (folder.path() / "info").c_str(), 1);
    EXPECT_EQ(hostName(), "here");
    setenv("VELMORA_MACHINE_INFO", (folder.path() / "none").c_str(), 1);
    EXPECT_NE(hostName(), "") << "the kernel's";
    unsetenv("VELMORA_MACHINE_INFO");
}

TEST(UserName, IsThatOfAUserOfThisMachine)
{
    EXPECT_EQ(localUserName(0), "root");
    EXPECT_EQ(localUserName(4'000'000'000), "");
}

TEST(KernelVersion, IsWhatTheReleaseBeginsWithOrNothing)
{
    const std::pair<const char*, SystemVersion> cases[] = {
        {"6.1.0-18-amd64", {6, 1}},
        {"6.12-rc3", {6, 12}},
        {"", {}},
        {"6.", {}},
        {"-26.4", {}},
        {" 26.4", {}},
        {"99999999999.4", {}},
        {"26.99999999999", {}},
    };
    for (const auto& [release, version] : cases) EXPECT_EQ(versionOfRelease(release), version) << release;
    EXPECT_GE(kernelVersion().major, 2);
}

struct PreferencesFileTest : testing::Test {
    TemporaryFolder home;
    std::filesystem::path folder = home.path() / "config/velmora";
    std::filesystem::path file = folder / "preferences.conf";
    ManualClock clock{std::make_shared<ManualLoop>()};
    RecordingLog log;
    std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>();

    /// Writes when told to, or at its end.
    PreferencesFile open() { return {folder, ManualQueue::handle(queue), clock, log}; }
    unsigned modeOf(const std::filesystem::path& path)
    {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
    }
};

TEST_F(PreferencesFileTest, WhatIsSetHoldsAtOnceAndIsThereBeforeTheEnd)
{
    {
        auto preferences = open();
        EXPECT_FALSE(preferences.boolean("seen"));
        preferences.set("seen", true);
        preferences.set("installed", true);
        preferences.set("installed", false);
        preferences.setText("place", "-12,400");
        EXPECT_EQ(queue->given, 1) << "one write for all of it";
        EXPECT_TRUE(preferences.boolean("seen"));
        EXPECT_FALSE(std::filesystem::exists(file)) << "the caller waits for no disk";
    }
    EXPECT_EQ(home.read(file), "installed=false\nplace=-12,400\nseen=true\n");
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(folder), 0700U);
    EXPECT_TRUE(open().boolean("seen"));
    EXPECT_FALSE(open().boolean("installed"));
    EXPECT_EQ(open().text("place"), "-12,400");
    EXPECT_EQ(log.count(), 0U);
}

TEST_F(PreferencesFileTest, OfABrokenFileTheGoodPartIsTakenAndAllOfItIsKept)
{
    const std::pair<const char*, std::string> cases[] = {
        {"a line that is none", "good=true\nnonsense\n"},
        {"a line without a key", "good=true\n=true\n"},
        {"torn", "good=true\nha"},
        {"noughts", std::string("good=true\nbad=\0\0\n", 17)},
        {"not text", "good=true\n\xff\xfe=\n"},
    };
    for (const auto& [what, contents] : cases) {
        SCOPED_TRACE(what);
        log.clear();
        std::filesystem::remove_all(folder);
        home.write(file, contents);
        auto preferences = open();
        EXPECT_TRUE(preferences.boolean("good"));
        EXPECT_EQ(log.count("set aside"), 1U);
        EXPECT_EQ(log.count(), 1U);
        ASSERT_FALSE(std::filesystem::exists(file));
        EXPECT_EQ(home.read(std::filesystem::directory_iterator(folder)->path()), contents);
    }
    home.write(file, "later=1 2 3\ngood=maybe\n");
    auto preferences = open();
    EXPECT_FALSE(preferences.boolean("good"));
    preferences.set("good", true);
    queue->run();
    EXPECT_EQ(home.read(file), "good=true\nlater=1 2 3\n") << "what a later version wrote stays";
}

TEST_F(PreferencesFileTest, AFileThatCannotBeWrittenIsALineInTheLogAndNothingLost)
{
    home.write("config/velmora", "where the folder should be");
    auto preferences = open();
    preferences.set("seen", true);
    preferences.set("seen", true);
    queue->run();
    EXPECT_TRUE(preferences.boolean("seen"));
    EXPECT_EQ(log.count(), 1U);
    std::filesystem::remove(folder);
    preferences.set("installed", true);
    queue->run();
    EXPECT_EQ(home.read(file), "installed=true\nseen=true\n") << "all of it, once it can be";

    PreferencesFile homeless({}, ManualQueue::handle(queue), clock, log);
    homeless.set("seen", true);
    queue->run();
    EXPECT_TRUE(homeless.boolean("seen"));
    EXPECT_EQ(log.count(), 1U);
}

TEST(CoreDumps, AreForbiddenHereAndInWhatIsStarted)
{
    const auto limitOf = [](pid_t process) {
        rlimit limit{};
        EXPECT_EQ(prlimit(process, RLIMIT_CORE, nullptr, &limit), 0);
        return limit.rlim_cur;
    };
    rlimit before{};
    getrlimit(RLIMIT_CORE, &before);
    const rlimit usual{.rlim_cur = std::min<rlim_t>(4096, before.rlim_max), .rlim_max = before.rlim_max};
    setrlimit(RLIMIT_CORE, &usual);
    forbidCoreDumps();
    EXPECT_EQ(limitOf(0), std::min<rlim_t>(1, before.rlim_max))
        << "which programs that take images are held to";
    const pid_t child = fork();
    if (child == 0) pause();
    EXPECT_EQ(limitOf(child), limitOf(0));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    setrlimit(RLIMIT_CORE, &before);
}

} // namespace
} // namespace velmora
