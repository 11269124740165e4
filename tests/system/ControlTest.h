// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "FakePlatform.h"
#include "LoopTest.h"
#include "PrivateBus.h"
#include "ShellCommand.h"
#include "bus/ExportedObject.h"

#include <cstdlib>
#include <future>
#include <gmock/gmock.h>
#include <optional>
#include <string>

namespace velmora {

/// velmoractl as a shell runs it, while the loop of the test is served.
template <typename Base>
struct CommandTest : Base {
    std::future<Outcome> begin(const std::string& words, const std::string& as = "")
    {
        return std::async(std::launch::async, shell, as + program + words);
    }
    Outcome await(std::future<Outcome> ended)
    {
        using namespace std::chrono_literals;
        EXPECT_TRUE(this->eventually([&] { return ended.wait_for(0s) == std::future_status::ready; }));
        return ended.get();
    }
    Outcome control(const std::string& words) { return await(begin(words)); }
    /// With what a person types where it asks.
    Outcome control(const std::string& words, const std::string& line)
    {
        return await(std::async(std::launch::async, typed, program + words, std::vector{line}));
    }
    void expectOutcome(const std::string& words, int status, const std::string& said)
    {
        const auto outcome = control(words);
        EXPECT_EQ(outcome.status, status) << words << ": " << outcome.said;
        EXPECT_THAT(outcome.said, testing::HasSubstr(said)) << words;
        EXPECT_THAT(outcome.said, testing::Not(testing::HasSubstr("\x1b")))
            << words << " reached for the terminal";
    }

    std::string program = VELMORA_BIN "/velmoractl ";
};

/// The same over an object of an application that is a part of the test.
struct ControlTest : CommandTest<LoopTest> {
    /// `command` is the first word after the program's name.
    explicit ControlTest(const std::string& command)
    {
        program += command + ' ';
        setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
    }
    ~ControlTest() override { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    /// The object that the test serves then.
    ExportedObject& startApplication(const wire::face::Face& face)
    {
        application = dbus::openSessionBus(loop);
        dbus::check(sd_bus_request_name(application.get(), wire::face::serviceName, 0), "name");
        return object.emplace(loop, application.get(), face);
    }

    void serve() override
    {
        using namespace std::chrono_literals;
        LoopTest::serve();
        machine.loop->advance(1ms);
        machine.settle();
    }

    PrivateBus bus;
    FakePlatform machine;
    dbus::Bus application;
    std::optional<ExportedObject> object;
};

} // namespace velmora
