// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LinuxPlatform.h"
#include "Options.h"
#include "RecordingLog.h"
#include "SessionTest.h"
#include "TemporaryFolder.h"
#include "bus/ApplicationObject.h"
#include "bus/SessionBus.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <future>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace velmora {
namespace {

TEST(SessionBusTest, ABusThatIsNotThereOrTakesConnectionsAndSaysNothingHoldsNobodyUp)
{
    const TemporaryFolder folder;
    const auto path = (folder.path() / "bus").string();
    const int listening = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
    EventLoop loop;
    RecordingLog log;
    EXPECT_EQ(SessionBus(loop, log).role(), SessionBus::Role::noBus);
    EXPECT_EQ(log.count(), 1U);
    ASSERT_EQ(bind(listening, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listening, 1), 0);
    EXPECT_EQ(SessionBus(loop, log).role(), SessionBus::Role::noBus);
    EXPECT_EQ(log.count("does not answer"), 1U);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    close(listening);
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

/// One end of a connection without a bus between.
dbus::Bus endOf(int socket, bool isServer)
{
    dbus::Bus bus;
    dbus::check(sd_bus_new(out(bus)), "sd_bus_new");
    dbus::check(sd_bus_set_fd(bus.get(), socket, socket), "sd_bus_set_fd");
    if (isServer) dbus::check(sd_bus_set_server(bus.get(), true, sd_id128_t{}), "sd_bus_set_server");
    dbus::check(sd_bus_start(bus.get()), "sd_bus_start");
    return bus;
}

int call(sd_bus* bus, const char* interface, const char* member, bool waits)
{
    constexpr std::uint64_t patience = 200'000; // microseconds
    sd_bus_message* made = nullptr;
    dbus::check(sd_bus_message_new_method_call(bus, &made, nullptr, "/", interface, member), member);
    const dbus::Message message(made);
    std::uint64_t serial = 0; // asked for, as an answer would be
    return waits ? sd_bus_call(bus, made, patience, nullptr, nullptr) : sd_bus_send(bus, made, &serial);
}

using Flood = LoopTest;

TEST_F(Flood, OfACallerWhoNeverReadsFillsNoMemory)
{
    constexpr int calls = 3'000;
    int ends[2]{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends), 0);
    const auto server = endOf(ends[0], true), client = endOf(ends[1], false);
    const int small = 4'096; // what the kernel keeps for a reader
    ASSERT_EQ(setsockopt(ends[0], SOL_SOCKET, SO_SNDBUF, &small, sizeof small), 0);
    dbus::shedFloods(server.get());
    int seen = 0;
    const auto count = [](sd_bus_message*, void* number, sd_bus_error*) {
        ++*static_cast<int*>(number);
        return 0;
    };
    dbus::check(sd_bus_add_filter(server.get(), nullptr, count, &seen), "filter");
    dbus::check(sd_bus_attach_event(server.get(), loop.handle(), SD_EVENT_PRIORITY_NORMAL), "attach");

    auto caller = std::async(std::launch::async, [&] {
        for (int i = 0; i < calls; ++i)
            call(client.get(), "org.freedesktop.DBus.Introspectable", "Introspect", false);
        sd_bus_flush(client.get());
    });
    std::uint64_t most = 0, unsent = 0;
    EXPECT_TRUE(eventually([&] {
        sd_bus_get_n_queued_write(server.get(), &unsent);
        most = std::max(most, unsent);
        return seen >= calls;
    }));
    EXPECT_EQ(most, 2 * dbus::maximumUnsent + 1);

    caller = std::async(std::launch::async, [&] { // reads, at last
        while (call(client.get(), "org.freedesktop.DBus.Peer", "Ping", true) == -ETIMEDOUT) {
        }
    });
    EXPECT_TRUE(
        eventually([&] { return caller.wait_for(std::chrono::seconds{0}) == std::future_status::ready; }));
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
