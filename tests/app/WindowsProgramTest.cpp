// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "windows/WindowsProgram.h"

#include "ManualLoop.h"
#include "SessionTest.h"
#include "base/SystemClock.h"
#include "windows/WindowsFollower.h"

#include <csignal>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

namespace velmora {

using namespace std::chrono_literals;

namespace {

/// Asked for windows, with a program in their place that notes how it was started and then does as told.
struct WindowsProgramTest : SessionTest {
    void programDoes(const std::string& what)
    {
        const auto script = folder.path() / "velmora-ui";
        std::ofstream(script) << "#!/bin/sh\ncd " << folder.path().string() << "\necho $$ >>ids\n"
                              << "echo \"$@\" \"$XDG_ACTIVATION_TOKEN\" >>started\n"
                              << what << "\n";
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        windows.emplace(loop, application.get(), clock, log, script);
    }
    void TearDown() override
    {
        if (windows) windows.reset();
        std::istringstream ids(folder.read("ids"));
        for (pid_t id = 0; ids >> id;) kill(id, SIGKILL);
    }

    /// The one that was started last; one that has ended is reaped here where nobody else did.
    bool isRunning() const
    {
        std::istringstream ids(folder.read("ids"));
        pid_t last = -1;
        for (pid_t id = 0; ids >> id;) last = id;
        waitpid(last, nullptr, WNOHANG | (windows ? WNOWAIT : 0));
        return last > 0 && kill(last, 0) == 0;
    }
    bool wasStarted(const std::string& how)
    {
        return eventually([&] { return folder.read("started") == how; });
    }

    /// The stranger is the program now; what it is told is noted and answered.
    void pose()
    {
        dbus::check(sd_bus_add_object(stranger.get(), out(posing), wire::windows::objectPath,
                                      dbus::serve<WindowsProgramTest, &WindowsProgramTest::told>, this),
                    "object");
        own(stranger.get(), wire::windows::serviceName);
    }
    int told(sd_bus_message* call)
    {
        const char* window = nullptr;
        const char* token = "";
        int x = 0, y = 0;
        const std::string method = sd_bus_message_get_member(call);
        if (method == "Toggle")
            dbus::check(sd_bus_message_read(call, "siis", &window, &x, &y, &token), "read");
        else
            dbus::check(sd_bus_message_read(call, "ss", &window, &token), "read");
        calls.push_back(method + " " + window + (*token ? std::string(" by ") + token : ""));
        return sd_bus_reply_method_return(call, nullptr);
    }

    static WindowRequest click()
    {
        return {.window = "panel", .isToggle = true, .at = ScreenPoint{1269, 14}, .token = "leave"};
    }

    static constexpr auto lives = "exec sleep 600";
    TemporaryFolder folder;
    RecordingLog log;
    SystemClock clock;
    std::optional<WindowsProgram> windows;
    dbus::Slot posing;
    std::vector<std::string> calls;
    std::string started;
};

TEST_F(WindowsProgramTest, IsStartedOnceAndToldOfTheRest)
{
    programDoes(lives);
    windows->request(click());
    ASSERT_TRUE(wasStarted("--toggle panel --at 1269,14 leave\n"));
    windows->request(click());
    windows->request({.window = "dashboard", .token = "a menu's leave"});
    pose();
    ASSERT_TRUE(eventually([&] { return calls.size() == 1; }));
    ASSERT_TRUE(eventually([&] { // once the answer is there
        windows->request(click());
        return calls.size() == 2;
    }));
    EXPECT_EQ(calls, (std::vector<std::string>{"Show dashboard by a menu's leave", "Toggle panel by leave"}))
        << "an impatient second click closes nothing";
    EXPECT_TRUE(wasStarted("--toggle panel --at 1269,14 leave\n"));
    EXPECT_TRUE(isRunning());
    windows.reset();
    EXPECT_TRUE(eventually([&] { return !isRunning(); })) << "and outlives nobody";
}

TEST_F(WindowsProgramTest, IsToldOfAllThatWereAskedForWhileItStarted)
{
    programDoes(lives);
    for (const auto* window : {"widget-small", "widget-medium", "dashboard", "widget-medium"})
        windows->request({.window = window});
    windows->request(click());
    ASSERT_TRUE(wasStarted("--show widget-small \n"));
    pose();
    ASSERT_TRUE(eventually([&] { return calls.size() == 3; }));
    EXPECT_EQ(calls,
              (std::vector<std::string>{"Show dashboard", "Show widget-medium", "Toggle panel by leave"}));
}

TEST_F(WindowsProgramTest, OneThatEndsOrCannotBeStartedIsNamedAndTriedAgainAtTheNextRequest)
{
    for (const auto* end : {"exit 3", "exit 0", "kill -9 $$"}) {
        programDoes(end);
        const auto lines = log.count();
        for (int click = 1; click <= 3; ++click) {
            windows->request({.window = "panel"});
            const std::string all = started += "--show panel \n";
            ASSERT_TRUE(wasStarted(all)) << end;
            ASSERT_TRUE(eventually([&] { return log.count() > lines && !isRunning(); })) << end;
        }
        EXPECT_EQ(log.count(), lines + 1) << end;
    }
    WindowsProgram missing(loop, application.get(), clock, log, folder.path() / "nothing");
    for (int click = 0; click < 3; ++click) missing.request({.window = "panel"});
    EXPECT_EQ(log.count("Cannot start"), 1U);
}

TEST_F(WindowsProgramTest, AsksForNewsWhileAWindowIsOpen)
{
    ManualLoop time;
    int asked = 0;
    const WindowsFollower follower(time, application.get(), [&] { ++asked; });
    own(application.get(), "app.velmora.Later"); // the bus has been asked about the windows by now
    const auto asksIn = [&](std::chrono::minutes passing) {
        const int before = asked;
        time.advance(passing);
        return asked - before;
    };
    EXPECT_EQ(asksIn(1h), 0);
    for (int run = 1; run <= 2; ++run) {
        asked = 0;
        own(stranger.get(), wire::windows::serviceName);
        ASSERT_TRUE(eventually([&] { return asked == 1; })) << "for the window that opens";
        EXPECT_EQ(asksIn(5min), 5);
        sd_bus_release_name(stranger.get(), wire::windows::serviceName);
        EXPECT_TRUE(eventually([&] { return asksIn(1min) == 0; })) << "nobody looks any more";
    }
}

} // namespace
} // namespace velmora
