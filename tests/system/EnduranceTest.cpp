// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SystemTest.h"
#include "history/HistoryCodec.h"
#include "wire/ChargerReport.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <nlohmann/json.hpp>
#include <random>

namespace velmora {
namespace {

/// After anything that a client can do the daemon answers, holds the limit and has not filled the log.
struct HostileClientsTest : SystemTest {
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
    const std::tuple<const char*, const char*, const char*, const char*, const char*> cases[] = {
        {wire::objectPath, daemon_protocol, settings.c_str(), "s", "InvalidArgs"},
        {wire::objectPath, daemon_protocol, settings.c_str(), "", "InvalidArgs"},
        {wire::objectPath, daemon_protocol, "getBatteryStateWithReply", "s", "InvalidArgs"},
        {wire::objectPath, daemon_protocol, "shutDown", "", "UnknownMethod"},
        {wire::objectPath, "app.velmora.Nothing", "getBatteryStateWithReply", "", "UnknownMethod"},
        {"/app/velmora/nothing", daemon_protocol, "getBatteryStateWithReply", "", "UnknownObject"},
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

/// The daemon is killed, again and again, while somebody changes settings and the charger comes and goes.
struct CrashTest : SystemTest {
    /// Every message carries a limit of its own, by which it is known again.
    static double limitOf(int message) { return 20 + message / 128.0; }
    static int messageOf(double limit) { return static_cast<int>(std::lround((limit - 20) * 128)); }

    /// The number of the message whose settings are on the disk; -1 where that file is not whole. Before the
    /// first there is no file.
    int stored() const
    {
        const auto text = folder.read(state() / "settings.json");
        if (text.empty()) return std::filesystem::exists(state() / "settings.json") ? -1 : 0;
        const auto document = nlohmann::json::parse(text, nullptr, false);
        if (document.is_discarded() || document.value("version", 0) != 2) return -1;
        const auto limit = document["settings"]["customChargeLimit"].get<double>();
        return limit == 80 && sent < messageOf(80) ? 0 : messageOf(limit);
    }

    /// A sample of history for each.
    void flipCharger() const
    {
        static bool isCharging = false;
        isCharging = !isCharging;
        const std::filesystem::path battery = tree() / "class/power_supply/BAT0";
        folder.write(battery / "status", isCharging ? "Charging\n" : "Discharging\n");
        folder.write(battery / "uevent", "POWER_SUPPLY_NAME=BAT0\n");
    }

    int sent = 0;
};

TEST_F(CrashTest, TwoHundredKillsLoseNothingThatWasStored)
{
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto upTo = [&random](int most) { return std::uniform_int_distribution(0, most)(random); };
    layLaptop();
    std::size_t samples = 0;
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const int before = stored();
        startDaemon();
        ASSERT_EQ(messageOf(peer.state().value().customChargeLimit), before == 0 ? messageOf(80) : before);
        ASSERT_GE(peer.history().value().size(), samples);
        for (int message = upTo(20); message >= 0; --message) {
            peer.send({.customChargeLimit = limitOf(++sent)});
            if (message % 4 == 0) flipCharger();
            loop.runOnce(std::chrono::milliseconds{upTo(2)});
        }
        daemon->signal(SIGKILL);
        ASSERT_EQ(daemon->wait(), 128 + SIGKILL);
        ASSERT_GE(stored(), before);
        ASSERT_LE(stored(), sent);
        const auto file = folder.read(state() / "history.json");
        const auto history = decodeHistory(file);
        ASSERT_TRUE(history || file.empty()) << file;
        if (history) samples = history->size();
    }
    EXPECT_GT(samples, 0U);
    EXPECT_GT(stored(), 0);
    startDaemon();
    ASSERT_TRUE(peer.set({.customChargeLimit = 60}));
    EXPECT_TRUE(becomes(58, 60));
    stopDaemon();
    for (const auto& file : std::filesystem::directory_iterator(state()))
        EXPECT_EQ(file.path().string().find("broken"), std::string::npos) << file.path();
}

} // namespace
} // namespace velmora
