// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "App.h"
#include "SimulatedLaptopTest.h"

#include <cstdlib>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;

/// Hears every message on the bus.
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

    int settings = 0; ///< messages with settings
    int pushes = 0;

private:
    static int hear(sd_bus_message* message, void* self, sd_bus_error*)
    {
        auto* ear = static_cast<Eavesdropper*>(self);
        const char* given = sd_bus_message_get_member(message);
        const std::string member = given ? given : "";
        if (member == wire::daemon_protocol::updateSettings.member()) ++ear->settings;
        if (member == wire::client_protocol::batteryStateDidChange.member()) ++ear->pushes;
        return 1;
    }

    dbus::Bus bus_;
    dbus::Slot filter_;
};

/// A running application, in this process, over the same laptop.
class ApplicationTest : public SimulatedLaptopTest {
protected:
    void TearDown() override
    {
        app.reset();
        platform.reset();
        SimulatedLaptopTest::TearDown();
    }

    void beginAt(int percent)
    {
        begin("thresholds");
        with([percent](auto& one) { one.setLevel(percent); });
        ASSERT_TRUE(becomes(78, 80));
        for (const auto& [name, value] : environment()) setenv(name.c_str(), value.c_str(), 1);
        platform.emplace("velmora");
        app.emplace(*platform);
        ASSERT_TRUE(eventually([&] { return std::abs(model().percentage.get() - percent) < 1; }));
    }

    void serve() override
    {
        SimulatedLaptopTest::serve();
        if (platform) platform->loop().runOnce(0ms);
    }

    BatteryModel& model() { return app->model(); }

    /// A switch that no push takes back, told to the daemon with all the rest and remembered there.
    bool tellsHeatNotice(bool wanted)
    {
        model().notifyOnHeat.set(wanted);
        const std::string line = std::string(R"("notifyOnHeat": )") + (wanted ? "true" : "false");
        return eventually([&] {
            const auto saved = folder.read(state() / "settings.json");
            return saved.substr(0, saved.find("quickCharge")).find(line) != std::string::npos;
        });
    }

    std::optional<LinuxPlatform> platform;
    std::optional<App> app;
};

TEST_F(ApplicationTest, QuickChargeEndsByItselfAndStaysEndedThroughARestart)
{
    beginAt(79);
    model().toggleTemporaryOverride();
    ASSERT_TRUE(becomes(99, 100));
    ASSERT_TRUE(passUntil(100, "Full"));
    ASSERT_TRUE(becomes(78, 80)) << "it ends by itself";
    ASSERT_TRUE(eventually([&] { return !model().isTemporaryOverrideEnabled.get(); })) << "and is not shown";
    ASSERT_TRUE(tellsHeatNotice(false));
    EXPECT_EQ(end(), 80) << "its echo starts nothing";
    stopDaemon();
    startDaemon();
    ASSERT_TRUE(tellsHeatNotice(true));
    EXPECT_EQ(end(), 80) << "nor after a restart";
    daemon->signal(SIGKILL);
    daemon->wait();
    startDaemon();
    ASSERT_TRUE(tellsHeatNotice(false));
    EXPECT_EQ(end(), 80) << "nor after a crash";
}

TEST_F(ApplicationTest, ApplicationsOfAnotherOpinionFallSilentAndTakeNothingBack)
{
    beginAt(80);
    Eavesdropper ear(loop, bus.address());
    const Process other(VELMORA_BIN "/velmora", environment(), folder.path() / "other");
    const auto fallsSilent = [&] {
        auto heard = ear.settings + ear.pushes;
        auto since = std::chrono::steady_clock::now();
        return eventually([&] {
            const auto now = std::chrono::steady_clock::now();
            if (std::exchange(heard, ear.settings + ear.pushes) != heard) since = now;
            return now - since > 4s; // longer than the model's and the daemon's own pauses together
        });
    };
    ASSERT_TRUE(peer.set({}) && fallsSilent()) << "all have spoken once";

    // Both applications go on believing that Auto-Protect is on, and say so with every echo.
    peer.send({.isAppleRecommendedMode = false});
    ASSERT_TRUE(becomes(95, 100));
    model().customChargeLimit.set(70);
    EXPECT_TRUE(fallsSilent());
    EXPECT_EQ(peer.state()->customChargeLimit, 70);
    EXPECT_EQ(end(), 100);
    stopDaemon();
    startDaemon();
    EXPECT_TRUE(fallsSilent()); // its first push is echoed, too
    model().customChargeLimit.set(75);
    EXPECT_TRUE(fallsSilent());
    EXPECT_EQ(peer.state()->customChargeLimit, 75);
    EXPECT_EQ(end(), 100) << "nor after a restart";
    EXPECT_TRUE(ear.pushes >= 3 && ear.settings >= 4) << "they did speak";
    EXPECT_LT(ear.settings, 20);
}

using DeafBusTest = SystemTest;

TEST_F(DeafBusTest, ABusThatNeverAnswersHoldsNobodysEnd)
{
    layLaptop();
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    const std::string path = folder.path() / "deaf";
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    pollfd listener{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), POLLIN, 0};
    ASSERT_EQ(bind(listener.fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener.fd, 1), 0);
    auto variables = environment();
    variables["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + path;
    for (const char* name : {"velmorad", "velmora"}) {
        SCOPED_TRACE(name);
        Process program(std::string(VELMORA_BIN "/") + name, variables, folder.path() / "log");
        ASSERT_EQ(poll(&listener, 1, 20'000), 1);
        const int connection = accept(listener.fd, nullptr, nullptr);
        EXPECT_EQ(program.terminate(), 0);
        close(connection);
    }
    close(listener.fd);
    EXPECT_EQ(end(), 100) << "without the name the charger is not this daemon's to hold";
    EXPECT_FALSE(std::filesystem::exists(state() / "settings.json"));
}

} // namespace
} // namespace velmora
