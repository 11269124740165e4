// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "App.h"
#include "DeafBus.h"
#include "SimulatedLaptopTest.h"
#include "bus/Records.h"

#include <cstdlib>
#include <map>
#include <poll.h>
#include <set>
#include <sys/socket.h>
#include <unistd.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;

TEST_F(SimulatedLaptopTest, ChargesToTheLimitStaysAndResumesBelowTheStart)
{
    startDaemon();
    ASSERT_TRUE(becomes(78, 80));
    ASSERT_TRUE(passUntil(80, "Not charging"));
    passHours(24);
    EXPECT_EQ(look().batteries.front().percent, 80);
    EXPECT_TRUE(shows(80, false));

    plug(false);
    ASSERT_TRUE(passUntil(79, "Discharging"));
    EXPECT_TRUE(shows(79, false));
    EXPECT_EQ(peer.state()->powerSource, "Battery");
    plug(true);
    passHours(1);
    EXPECT_EQ(look().batteries.front().percent, 79) << "not worth charging yet";
    plug(false);
    ASSERT_TRUE(passUntil(76, "Discharging"));
    plug(true);
    EXPECT_TRUE(shows(76, true));
    EXPECT_TRUE(passUntil(80, "Not charging"));
    EXPECT_TRUE(shows(80, false));
}

TEST_F(SimulatedLaptopTest, FirmwareThatDoesNotAnswerKeepsNobodyWaitingAndLosesNothing)
{
    mount(3s);
    startDaemon();
    ASSERT_TRUE(peer.set({.customChargeLimit = 70}));
    EXPECT_EQ(peer.state()->customChargeLimit, 70);
    EXPECT_EQ(end(), 100) << "the first write is still under way";
    stopDaemon();
    EXPECT_NE(folder.read(state() / "settings.json").find("\"customChargeLimit\": 70"), std::string::npos);
}

/// Hears every message with settings on the bus.
class Eavesdropper {
public:
    Eavesdropper(const EventLoop& loop, const std::string& address)
    {
        sd_bus* made = nullptr;
        dbus::check(sd_bus_new(&made), "new");
        bus_.reset(made);
        dbus::check(sd_bus_set_address(made, address.c_str()), "address");
        dbus::check(sd_bus_set_bus_client(made, 1), "client");
        dbus::check(sd_bus_set_monitor(made, 1), "monitor");
        dbus::check(sd_bus_start(made), "start");
        dbus::check(sd_bus_call_method(made, dbus::busName, dbus::busPath, "org.freedesktop.DBus.Monitoring",
                                       "BecomeMonitor", nullptr, nullptr, "asu", 0, 0),
                    "BecomeMonitor");
        dbus::check(sd_bus_attach_event(made, loop.handle(), 0), "attach");
        sd_bus_slot* slot = nullptr;
        dbus::check(sd_bus_add_filter(made, &slot, hear, this), "filter");
        filter_.reset(slot);
    }

    std::map<double, std::set<std::string>> said; ///< who has told the daemon of which limit

private:
    static int hear(sd_bus_message* message, void* self, sd_bus_error*)
    {
        const auto settings = wire::daemon_protocol::updateSettings.member();
        if (sd_bus_message_is_method_call(message, wire::daemon_protocol::interface, settings.c_str()) > 0)
            static_cast<Eavesdropper*>(self)->said[dbus::readSettings(message).customChargeLimit].insert(
                sd_bus_message_get_sender(message));
        return 1;
    }

    dbus::Bus bus_;
    dbus::Slot filter_;
};

/// A running application, in this process, over the same laptop.
struct ApplicationTest : SimulatedLaptopTest {
    void TearDown() override
    {
        app.reset();
        platform.reset();
        SimulatedLaptopTest::TearDown();
    }

    void beginAt(int percent)
    {
        startDaemon();
        with([percent](auto& one) { one.setLevel(percent); });
        ASSERT_TRUE(becomes(78, 80));
        for (const auto& [name, value] : environment()) setenv(name.c_str(), value.c_str(), 1);
        logIn();
        ASSERT_TRUE(eventually([&] {
            return app->hasSettings() && std::abs(model().percentage.get() - percent) < 1;
        })) << "before that what is pressed gives way to what the daemon holds";
    }

    void logIn()
    {
        app.reset();
        platform.reset();
        platform.emplace("velmora");
        app.emplace(*platform);
    }

    void serve() override
    {
        SimulatedLaptopTest::serve();
        if (platform) platform->loop().runOnce(0ms);
    }

    BatteryModel& model() { return app->model(); }

    /// Presses until it is so: a daemon that has just begun first tells the application what it holds.
    template <typename T, typename Condition>
    bool press(Observable<T>& setting, T wanted, Condition condition)
    {
        return eventually([&] {
            if (setting.get() != wanted) setting.set(wanted);
            return condition();
        });
    }

    /// A switch told to the daemon with all the rest and remembered there where it is not as usual.
    bool tellsHeatNotice(bool wanted)
    {
        return press(model().notifyOnHeat, wanted,
                     [&] { return isStored(R"("notifyOnHeat": false)") != wanted; });
    }

    /// Among the settings that are in force.
    bool isStored(const std::string& line) const
    {
        const auto saved = folder.read(state() / "settings.json");
        return saved.substr(0, saved.find("quickCharge")).find(line) != std::string::npos;
    }

    std::optional<LinuxPlatform> platform;
    std::optional<App> app;
};

TEST_F(ApplicationTest, ChoicesOutliveALogIn)
{
    Eavesdropper ear(loop, bus.address());
    beginAt(60);
    ASSERT_TRUE(eventually([&] { return ear.said[80].size() == 1; })) << "it knows what is held";
    model().toggleAppleRecommendedMode();
    model().toggleTemporaryOverride();
    model().notifyOnLowBattery.set(false);
    ASSERT_TRUE(becomes(99, 100));
    ASSERT_TRUE(tellsHeatNotice(false));
    ear.said.clear();
    logIn();
    ASSERT_TRUE(model().notifyOnHeat.get() && !model().isTemporaryOverrideEnabled.get());
    ASSERT_TRUE(eventually([&] { return !model().notifyOnHeat.get(); }));
    EXPECT_TRUE(model().isTemporaryOverrideEnabled.get());
    EXPECT_FALSE(model().isAppleRecommendedModeEnabled.get());
    EXPECT_FALSE(model().notifyOnLowBattery.get());
    const Process other(VELMORA_BIN "/velmora", environment(), folder.path() / "other");
    ASSERT_TRUE(eventually([&] { return ear.said[80].size() == 2; })) << "both have told all";
    EXPECT_EQ(peer.number("EndThreshold"), 100) << "and quick charge goes on";
    EXPECT_TRUE(model().isTemporaryOverrideEnabled.get());
    EXPECT_EQ(peer.state()->customChargeLimit, 80);
}

TEST_F(ApplicationTest, ApplicationsFollowAChangeByAnybodyAndTakeNothingBack)
{
    Eavesdropper ear(loop, bus.address());
    beginAt(80);
    const Process other(VELMORA_BIN "/velmora", environment(), folder.path() / "other");
    const auto haveSaid = [&](double limit, std::size_t speakers) {
        return eventually([&] { return ear.said[limit].size() == speakers; });
    };
    ASSERT_TRUE(peer.set({}) && haveSaid(80, 3)) << "both applications and the peer";
    ASSERT_TRUE(peer.state() && peer.set({})) << "and the daemon, who asked the bus about them, knows";

    peer.send({.isAppleRecommendedMode = false});
    ASSERT_TRUE(becomes(95, 100));
    ASSERT_TRUE(eventually([&] { return !model().isAppleRecommendedModeEnabled.get(); }));
    for (const double limit : {70.0, 75.0}) {
        SCOPED_TRACE(limit);
        EXPECT_TRUE(press(model().customChargeLimit, limit, [&] { return ear.said[limit].size() == 2; }));
        EXPECT_EQ(peer.state()->customChargeLimit, limit);
        stopDaemon();
        EXPECT_TRUE(isStored(R"("isAppleRecommendedMode": false)"));
        EXPECT_EQ(end(), 100);
        model().percentage.set(0);
        startDaemon();
        ASSERT_TRUE(eventually([&] { return model().percentage.get() > 0; })) << "it has met the next daemon";
    }
}

using DeafBusTest = SystemTest;

TEST_F(DeafBusTest, ABusThatNeverAnswersHoldsNobodysEnd)
{
    layLaptop();
    const DeafBus deaf;
    deaf.listen();
    pollfd listener{deaf.descriptor(), POLLIN, 0};
    auto variables = environment();
    variables["DBUS_SYSTEM_BUS_ADDRESS"] = deaf.address();
    for (const char* name : {"velmorad", "velmora"}) {
        SCOPED_TRACE(name);
        Process program(std::string(VELMORA_BIN "/") + name, variables, folder.path() / "log");
        ASSERT_EQ(poll(&listener, 1, 20'000), 1);
        const int connection = accept(listener.fd, nullptr, nullptr);
        EXPECT_EQ(program.terminate(), 0);
        close(connection);
    }
    EXPECT_EQ(end(), 100) << "without the name the charger is not this daemon's to hold";
    EXPECT_FALSE(std::filesystem::exists(state() / "settings.json"));
}

} // namespace
} // namespace velmora
