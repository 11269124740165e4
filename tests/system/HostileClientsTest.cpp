// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SystemTest.h"

#include "wire/ChargerReport.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace velmora {
namespace {

/// After anything that a client can do the daemon answers, holds the limit and has not filled the log.
class HostileClientsTest : public SystemTest {
protected:
    HostileClientsTest()
    {
        layLaptop();
        startDaemon();
    }

    void TearDown() override
    {
        Peer afterwards(loop);
        EXPECT_TRUE(afterwards.state());
        ASSERT_TRUE(afterwards.set({.customChargeLimit = 66}));
        EXPECT_TRUE(becomes(64, 66)) << start() << " " << end();
        const auto lines = log();
        EXPECT_LT(std::ranges::count(lines, '\n'), 100);
        stopDaemon();
        SystemTest::TearDown();
    }
};

TEST_F(HostileClientsTest, MessagesThatMakeNoSenseAreAnsweredWithAnError)
{
    const auto* daemon_protocol = wire::daemon_protocol::interface;
    const auto settings = wire::daemon_protocol::updateSettings.member();
    const struct {
        const char *path, *interface, *member, *signature, *error;
    } cases[] = {
        {wire::objectPath, daemon_protocol, settings.c_str(), "s", "InvalidArgs"},
        {wire::objectPath, daemon_protocol, settings.c_str(), "", "InvalidArgs"},
        {wire::objectPath, daemon_protocol, "getBatteryStateWithReply", "s", "InvalidArgs"},
        {wire::objectPath, daemon_protocol, "toggleChargingWithReply", "s", "InvalidArgs"},
        {wire::objectPath, daemon_protocol, "shutDown", "", "UnknownMethod"},
        {wire::objectPath, "app.velmora.Nothing", "getBatteryStateWithReply", "", "UnknownMethod"},
        {"/app/velmora/nothing", daemon_protocol, "getBatteryStateWithReply", "", "UnknownObject"},
        {"/", daemon_protocol, "getBatteryStateWithReply", "", "UnknownObject"},
    };
    for (const auto& [path, interface, member, signature, error] : cases) {
        SCOPED_TRACE(std::string(path) + " " + interface + "." + member + " (" + signature + ")");
        const auto call = peer.call(path, interface, member);
        if (*signature) sd_bus_message_append(call.get(), signature, "nonsense");
        EXPECT_FALSE(peer.ask(call));
        EXPECT_EQ(peer.lastError, std::string("org.freedesktop.DBus.Error.") + error);
    }
    const auto set = peer.call(wire::objectPath, "org.freedesktop.DBus.Properties", "Set");
    sd_bus_message_append(set.get(), "ssv", ChargerReport::interface, "EndThreshold", "x", std::int64_t{100});
    EXPECT_FALSE(peer.ask(set));
    EXPECT_EQ(peer.lastError, "org.freedesktop.DBus.Error.PropertyReadOnly");
}

TEST_F(HostileClientsTest, ABurstOfChangesLeavesTheLastOne)
{
    for (int i = 1; i <= 10'000; ++i) peer.send({.customChargeLimit = 20 + i % 80 + 0.5 * (i % 2)});
    peer.send({.customChargeLimit = 75});
    EXPECT_EQ(peer.state()->customChargeLimit, 75);
    stopDaemon();
    const auto saved = nlohmann::json::parse(folder.read(state() / "settings.json"), nullptr, false);
    EXPECT_EQ(saved["settings"]["customChargeLimit"], 75) << "however long the disk takes for each";
    startDaemon();
    EXPECT_TRUE(becomes(73, 75));
}

TEST_F(HostileClientsTest, ClientsThatLeaveAtOnce)
{
    for (int i = 0; i < 300; ++i) {
        const Peer hasty(loop);
        hasty.send({.customChargeLimit = 30});
        hasty.tell(hasty.call(wire::daemon_protocol::toggleCharging));
    }
}

TEST_F(HostileClientsTest, ClientsThatNeverReadTheirAnswers)
{
    const EventLoop unserved;
    const Peer deaf(unserved);
    for (int i = 0; i < 5'000; ++i) {
        const auto call = deaf.call(i % 2 ? wire::daemon_protocol::getAnalyticsHistory
                                          : wire::daemon_protocol::toggleCharging);
        std::uint64_t cookie = 0;
        ASSERT_GE(sd_bus_send(deaf.bus(), call.get(), &cookie), 0);
    }
    EXPECT_GE(sd_bus_flush(deaf.bus()), 0);
}

} // namespace
} // namespace velmora
