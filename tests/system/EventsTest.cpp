// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopKinds.h"
#include "LaptopShow.h"
#include "SystemTest.h"
#include "bus/Records.h"
#include "wire/ChargerInterface.h"

#include <csignal>

namespace velmora {
namespace {

/// A daemon over a simulated laptop whose battery is hot after one second.
struct EventsTest : SystemTest {
    EventsTest()
    {
        std::filesystem::create_directories(options.folder);
        show = showTree(laptop, options, note);
        owner.emplace(laptop, *show, 60, [](const auto&) {});
        laptop.with([](SimulatedLaptop& made) { made.setLevel(60); });
        startDaemon();
        const auto heard = [](sd_bus_message* signal, void* self, sd_bus_error*) {
            const auto event = ChargeEvent::unarchived(dbus::readArchive(signal));
            if (event && event->kind != ChargeEvent::Kind::levelLost)
                static_cast<EventsTest*>(self)->events.push_back(*event);
            return 0;
        };
        listening = dbus::match(
            peer.bus(), {.interface = wire::charger::interface, .member = wire::charger::occurred.selector},
            heard, this);
        peer.send({.customHysteresis = 5});
        EXPECT_TRUE(becomes(75, 80));
    }

    void startDaemon()
    {
        auto surroundings = environment();
        surroundings["VELMORA_HEAT_PATIENCE"] = "1";
        daemon.emplace(VELMORA_BIN "/velmorad", surroundings, folder.path() / "log");
        ASSERT_TRUE(eventually([this] { return peer.state().has_value(); }));
    }

    void serve() override
    {
        owner->pass(std::chrono::milliseconds{5});
        LoopTest::serve();
    }

    /// Told next, and nothing else before it.
    bool tells(ChargeEvent::Kind kind)
    {
        EXPECT_TRUE(eventually([&] { return !events.empty(); }));
        const auto told = std::exchange(events, {});
        return told.size() == 1 && told.front().kind == kind;
    }

    TreeOptions options{.folder = tree(), .isPlain = true};
    std::string note;
    SharedLaptop laptop{*laptopOfKind("thresholds")};
    std::unique_ptr<LaptopTree> show;
    std::optional<LaptopShow> owner;
    std::vector<ChargeEvent> events;
    dbus::Slot listening;
};

TEST_F(EventsTest, WhatHappensToALaptopIsToldOnceAndNoPauseForHeatOutlivesTheDaemon)
{
    using Kind = ChargeEvent::Kind;
    owner->command("level 77");
    ASSERT_TRUE(tells(Kind::chargingPaused));
    stopDaemon();
    startDaemon();
    owner->command("level 73");
    ASSERT_TRUE(tells(Kind::chargingResumed)) << "and the pause not again";

    owner->command("level 40");
    owner->command("heat 46");
    ASSERT_TRUE(tells(Kind::thermalPause));
    EXPECT_LT(end(), 80);
    daemon->signal(SIGKILL);
    daemon->wait();
    EXPECT_LT(end(), 80);
    daemon.reset();
    startDaemon();
    EXPECT_TRUE(becomes(75, 80)) << "and no more of the heat";
    EXPECT_TRUE(eventually([this] { return end() < 80; })) << "until it has lasted again";
    stopDaemon();
    EXPECT_EQ(end(), 80);
}

} // namespace
} // namespace velmora
