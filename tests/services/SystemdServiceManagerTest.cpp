// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "systemd/SystemdServiceManager.h"

#include "DeafBus.h"
#include "LoopTest.h"
#include "PrivateBus.h"
#include "RecordingLog.h"
#include "StandInManager.h"

#include <atomic>
#include <cstdlib>
#include <thread>

namespace velmora {
namespace {

using Code = ServiceManager::ErrorCode;
using Course = StandInManager::Course;

/// The adapter and a manager on a bus of their own.
struct SystemdServiceManagerTest : LoopTest {
    void begin(const StandInManager::Options& options)
    {
        end();
        connection = dbus::openSystemBus(loop);
        manager.emplace(loop, connection.get(), options);
    }
    void end()
    {
        manager.reset();
        connection.reset();
    }

    void install()
    {
        outcome.reset();
        service.registerService([this](const auto& error) {
            EXPECT_FALSE(outcome) << "told twice";
            outcome.emplace(error ? static_cast<int>(error->code) : 1);
            words = error ? error->description : "";
        });
        EXPECT_FALSE(outcome) << "told too early";
    }
    bool isTold()
    {
        return eventually([&] { return outcome.has_value(); });
    }

    PrivateBus bus;
    RecordingLog log;
    SystemdServiceManager service{loop, log};
    dbus::Bus connection;
    std::optional<StandInManager> manager;
    std::optional<int> outcome; ///< 1, or the code
    std::string words;
};

TEST_F(SystemdServiceManagerTest, EachCourseHasItsCodeAndAsksOnce)
{
    const std::tuple<const char*, StandInManager::Options, int, int, const char*> cases[] = {
        {"granted", {}, 1, 1, ""},
        {"enabled before", {.isEnabled = true}, 12, 1, "is enabled already"},
        {"refused", {.course = Course::refused}, 4, 0, "Permission denied"},
        {"cancelled", {.course = Course::cancelled}, 4, 1, "Permission denied"},
        {"nobody to ask", {.course = Course::noAgent}, 4, 0, "Interactive authentication required."},
        {"missing", {.course = Course::missing}, 3, 1, "does not exist"},
        {"damaged", {.course = Course::damaged}, 3, 1, "bad unit file setting"},
        {"masked", {.course = Course::masked}, 2, 1, "is masked"},
        {"not to be enabled", {.course = Course::withoutInstall}, 2, 1, "cannot be enabled"},
        {"job failed", {.course = Course::failing}, 2, 1, "ended as \"failed\""},
    };
    for (const auto& [what, options, wanted, prompts, said] : cases) {
        SCOPED_TRACE(what);
        begin(options);
        install();
        ASSERT_TRUE(isTold());
        EXPECT_EQ(outcome, wanted);
        EXPECT_EQ(manager->prompts(), prompts);
        EXPECT_NE(words.find(said), std::string::npos) << words;
    }
    EXPECT_EQ(log.count(), std::size(cases) - 1) << "each failure is a line";
}

TEST_F(SystemdServiceManagerTest, APromptMayStandLongerThanAnyCallMayTake)
{
    setenv("SYSTEMD_BUS_TIMEOUT", "1s", 1);
    begin({.thinking = std::nullopt});
    install();
    ASSERT_TRUE(eventually([&] { return manager->isPrompting(); }));
    // A call with the usual patience, made later to somebody who does not answer either, gives up.
    dbus::Bus mute;
    dbus::check(sd_bus_open_system(out(mute)), "open");
    const char* name = nullptr;
    dbus::check(sd_bus_get_unique_name(mute.get(), &name), "name");
    ASSERT_TRUE(answer(connection.get(), dbus::newCall(connection.get(), name, "/", "a.b", "C")));
    unsetenv("SYSTEMD_BUS_TIMEOUT");
    EXPECT_FALSE(outcome);
    manager->decide();
    EXPECT_TRUE(isTold());
    EXPECT_EQ(outcome, 1);
}

TEST_F(SystemdServiceManagerTest, AnInstallationEndsWithWhatItHangsOn)
{
    install();
    ASSERT_TRUE(isTold()) << "no manager";
    EXPECT_EQ(outcome, 2);

    begin({});
    manager->onStart = [this] {
        // Anybody may tell anybody that the job is done.
        const auto liar = dbus::openSystemBus(loop);
        for (int id = 0; id < 100; ++id) {
            dbus::Message lie;
            sd_bus_message_new_signal(liar.get(), out(lie), systemd::objectPath, systemd::managerInterface,
                                      "JobRemoved");
            sd_bus_message_append(lie.get(), "uoss", 42U, "/org/freedesktop/systemd1/job/42",
                                  SystemdServiceManager::unit, "done");
            sd_bus_send_to(liar.get(), lie.get(), (":1." + std::to_string(id)).c_str(), nullptr);
        }
        sd_bus_flush(liar.get());
        loop.post([this] { end(); });
    };
    install();
    ASSERT_TRUE(isTold()) << "a manager that goes while the job runs";
    EXPECT_EQ(outcome, 2);

    begin({.thinking = std::nullopt});
    install();
    ASSERT_TRUE(eventually([&] { return manager->isPrompting(); }));
    bus.stop();
    ASSERT_TRUE(isTold()) << "a bus that goes while the prompt stands";
    EXPECT_EQ(outcome, 2);

    install();
    ASSERT_TRUE(isTold()) << "no bus";
    EXPECT_EQ(outcome, 2);
}

TEST_F(SystemdServiceManagerTest, OnlyEnabledIsEnabledAndWhoDoesNotSayIsNotWaitedFor)
{
    using Status = ServiceManager::Status;
    for (const auto course : {Course::granted, Course::masked, Course::missing}) {
        begin({.course = course, .isEnabled = true});
        std::atomic<bool> isAsking = true;
        std::thread systemd([&] { // since the question waits for its answer
            while (isAsking) serve();
        });
        EXPECT_EQ(service.status(), course == Course::granted ? Status::enabled : Status::notRegistered);
        isAsking = false;
        systemd.join();
    }
    const DeafBus deaf;
    setenv("DBUS_SYSTEM_BUS_ADDRESS", deaf.address().c_str(), 1);
    EXPECT_EQ(service.status(), Status::notRegistered) << "no bus";
    deaf.listen();
    EXPECT_EQ(service.status(), Status::notRegistered) << "one that lets nobody in";
    EXPECT_EQ(log.count("Cannot ask systemd"), 3U);
}

} // namespace
} // namespace velmora
