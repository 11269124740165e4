// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "DeafBus.h"
#include "LinuxPlatform.h"
#include "Options.h"
#include "RecordingLog.h"
#include "SessionTest.h"
#include "TemporaryFolder.h"
#include "bus/ApplicationObject.h"
#include "bus/SessionBus.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace velmora {
namespace {

TEST(SessionBusTest, ABusThatIsNotThereOrTakesConnectionsAndSaysNothingHoldsNobodyUp)
{
    const DeafBus bus;
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
    EventLoop loop;
    RecordingLog log;
    EXPECT_EQ(SessionBus(loop, log).role(), SessionBus::Role::noBus);
    EXPECT_EQ(log.count(), 1U);
    bus.listen();
    EXPECT_EQ(SessionBus(loop, log).role(), SessionBus::Role::noBus);
    EXPECT_EQ(log.count("does not answer"), 1U);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
}

TEST_F(SessionTest, ASecondProgramHandsItsErrandToTheFirst)
{
    ApplicationObject object(application.get());
    std::vector<std::string> asked;
    object.onActivate = [&](const auto& token) { asked.push_back("activate " + token); };
    object.onWindow = [&](const std::string& window, const auto& token) {
        asked.push_back(window + " " + token);
    };
    object.onQuit = [&] { asked.push_back("quit"); };
    setenv("XDG_ACTIVATION_TOKEN", "leave", 1);
    std::atomic<int> done{0};
    std::thread second([&] { // its calls wait, and this thread answers them
        for (const auto command : {Command::run, Command::panel, Command::mediumWidget, Command::quit}) {
            EventLoop itsLoop;
            RecordingLog log;
            SessionBus session(itsLoop, log);
            EXPECT_EQ(session.role(), SessionBus::Role::secondary);
            EXPECT_TRUE(session.forward(actionOf(command)));
            ++done;
        }
    });
    EXPECT_TRUE(eventually([&] { return done == 4; }));
    second.join();
    unsetenv("XDG_ACTIVATION_TOKEN");
    EXPECT_EQ(asked,
              (std::vector<std::string>{"activate leave", "panel leave", "widget-medium leave", "quit"}));

    const auto unknown = call("org.freedesktop.Application", "ActivateAction");
    dbus::check(sd_bus_message_append(unknown.get(), "sava{sv}", "format", 0, 0), "append");
    ask(unknown);
    EXPECT_EQ(lastError, SD_BUS_ERROR_INVALID_ARGS);
}

namespace fs = std::filesystem;

fs::path temporaryDirectory()
{
    const LinuxPlatform platform("test");
    return Platform::current().temporaryDirectory;
}

TEST(LinuxPlatform, TemporaryFilesAreKeptOnlyWhereNobodyElseCanLayALink)
{
    const TemporaryFolder shared;
    const auto own = shared.path() / ("velmora-" + std::to_string(geteuid()));
    setenv("TMPDIR", shared.path().c_str(), true);
    setenv("XDG_RUNTIME_DIR", "", true);
    fs::create_directory(shared.path() / "trap");
    fs::permissions(shared.path() / "trap", fs::perms::owner_all);
    fs::create_directory_symlink(shared.path() / "trap", own);
    EXPECT_EQ(temporaryDirectory(), "");
    fs::remove(own);
    EXPECT_EQ(temporaryDirectory(), own);
    fs::permissions(own, fs::perms::all);
    EXPECT_EQ(temporaryDirectory(), "");
    setenv("XDG_RUNTIME_DIR", (shared.path() / "trap").c_str(), true);
    EXPECT_EQ(temporaryDirectory(), shared.path() / "trap");
    unsetenv("TMPDIR");
    unsetenv("XDG_RUNTIME_DIR");
}

} // namespace
} // namespace velmora
