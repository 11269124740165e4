// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Dunst.h"
#include "SimulatedLaptopTest.h"
#include "wire/ModelFace.h"

#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>

namespace velmora {
namespace {

using testing::ElementsAre;
using Titles = std::vector<std::string>;

/// A person's desktop: a session bus and a notification server of its own, and velmora on it.
class Desktop {
public:
    static constexpr double lowBatteryLimit = 25; ///< not the usual one, so that it tells who knows it

    Desktop(EventLoop& loop, Process::Environment environment) : environment_(std::move(environment))
    {
        environment_["DBUS_SESSION_BUS_ADDRESS"] = bus_.address();
        environment_["XDG_CONFIG_HOME"] = folder_.path() / "config";
        environment_["XDG_RUNTIME_DIR"] = folder_.path();
        environment_["XDG_SESSION_ID"] = "";
        environment_["DISPLAY"] = environment_["WAYLAND_DISPLAY"] = "";
        folder_.write("config/velmora/preferences.conf", "hasSeenGnomeAdvice=true\n");
        folder_.write("start", "#!/bin/sh\nexec " VELMORA_BIN "/velmora --background\n");
        std::filesystem::permissions(program_, std::filesystem::perms{0700});
        setenv("DBUS_SESSION_BUS_ADDRESS", bus_.address().c_str(), 1);
        script_ = dbus::openSessionBus(loop);
    }

    void logIn()
    {
        if (velmora_) velmora_->terminate();
        velmora_.emplace(program_, environment_, folder_.path() / "log");
    }

    /// It has a server to show notices, and the daemon has told it this user's switches.
    bool isReady()
    {
        double limit = 0;
        sd_bus_get_property_trivial(script_.get(), wire::face::serviceName, wire::face::objectPath,
                                    wire::face::interface, "lowBatteryLimit", nullptr, 'd', &limit);
        return limit == lowBatteryLimit && dunst_.displayed() >= 0;
    }

    Titles titles() const
    {
        Titles all;
        for (const auto& notice : dunst_.shown()) all.push_back(notice.title);
        return all;
    }
    /// As the page does it.
    void switchOn(const char* property)
    {
        using namespace wire::face;
        EXPECT_GE(sd_bus_set_property(script_.get(), serviceName, calendar::objectPath, calendar::interface,
                                      property, nullptr, "b", 1),
                  0);
    }
    std::string lastBody() const { return dunst_.shown().back().body; }
    std::string log() const { return folder_.read("log"); }

private:
    PrivateBus bus_;
    TemporaryFolder folder_;
    Process::Environment environment_;
    std::filesystem::path program_ = folder_.path() / "start";
    Dunst dunst_{bus_.address()};
    dbus::Bus script_;
    std::optional<Process> velmora_;
};

/// Notices as people see them, over a laptop whose time the test moves. A notice comes when all is done that
/// leads to it; that another did not come shows in the one that comes next.
struct NoticesTest : SimulatedLaptopTest {
    void SetUp() override
    {
        if (!Dunst::isInstalled()) GTEST_SKIP() << "dunst or Xvfb is not installed";
        SimulatedLaptopTest::SetUp();
        if (IsSkipped()) return;
        with([](auto& one) { one.setLevel(70); });
        setenv("VELMORA_HEAT_PATIENCE", "1", 1);
        startDaemon();
        ASSERT_TRUE(becomes(78, 80));
        ASSERT_TRUE(peer.set(wanted));
    }
    void TearDown() override
    {
        if (HasFailure() && desktop) std::fputs(desktop->log().c_str(), stderr);
        desktop.reset();
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        unsetenv("VELMORA_HEAT_PATIENCE");
        SimulatedLaptopTest::TearDown();
    }

    void sitDown()
    {
        desktop.emplace(loop, environment());
        setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), 1); // another bus took the name over
        logIn();
    }
    void logIn()
    {
        desktop->logIn();
        ASSERT_TRUE(eventually([&] { return desktop->isReady(); }));
    }
    void restartDaemon()
    {
        stopDaemon();
        startDaemon();
    }

    /// In that order, and no other.
    bool areShown(const Titles& titles)
    {
        eventually([&] { return desktop->titles().size() >= titles.size(); });
        EXPECT_EQ(desktop->titles(), titles);
        return desktop->titles() == titles;
    }

    ChargingSettings wanted{.notifyOnCycle = true, .lowBatteryLimit = Desktop::lowBatteryLimit};
    std::optional<Desktop> desktop;
};

TEST_F(NoticesTest, EachThingThatHappensIsOneNotice)
{
    sitDown();
    Titles told{"Charging Paused"};
    ASSERT_TRUE(passUntil(75, "Charging") && shows(75, true));
    ASSERT_TRUE(passUntil(80, "Not charging"));
    ASSERT_TRUE(areShown(told));
    passHours(24);

    plug(false);
    told.push_back("Power Source Changed");
    ASSERT_TRUE(areShown(told));
    EXPECT_EQ(desktop->lastBody(), "Your Mac is now running on Battery Power.");

    ASSERT_TRUE(passUntil(25, "Discharging"));
    told.push_back("Low Battery");
    ASSERT_TRUE(areShown(told));
    logIn();
    ASSERT_TRUE(passUntil(20, "Discharging") && shows(20, false));
    restartDaemon();
    ASSERT_TRUE(passUntil(15, "Discharging") && shows(15, false));

    plug(true);
    told.push_back("Power Source Changed");
    ASSERT_TRUE(areShown(told)) << "the dip was told before either restart";
    EXPECT_EQ(desktop->lastBody(), "Your Mac is now running on AC Power.");
    with([](auto& one) { one.setLevel(50), one.setHeat(46); });
    told.push_back("Thermal Protection");
    ASSERT_TRUE(eventually([&] {
        with([](auto& one) { one.advance(1); });
        return desktop->titles() == told;
    }));
    EXPECT_LT(end(), 80);
    stopDaemon();
    EXPECT_EQ(end(), 80) << "no pause for heat outlives the daemon";
    with([](auto& one) { one.setHeat(30); });
    startDaemon();
    with([](auto& one) { one.addCycle(); });
    told.push_back("Charge Cycle Completed");
    ASSERT_TRUE(areShown(told));
    wanted.isTemporaryOverride = true;
    ASSERT_TRUE(peer.set(wanted) && becomes(99, 100) && passUntil(100, "Full"));
    told.push_back("Full Charge Reached");
    areShown(told);
}

TEST_F(NoticesTest, AJourneyInTheCalendarIsChargedFor)
{
    const auto inFiveHours = std::time(nullptr) + 5 * 60 * 60;
    char start[32];
    std::strftime(start, sizeof start, "%Y%m%dT%H%M%SZ", std::gmtime(&inFiveHours));
    folder.write("data/velmora/calendars/trip.ics",
                 std::string("BEGIN:VEVENT\nUID:1\nSUMMARY:Flight to Lisbon\nDTSTART:") + start +
                     "\nEND:VEVENT\n");
    sitDown();
    ASSERT_TRUE(passUntil(75, "Charging") && shows(75, true));
    ASSERT_TRUE(passUntil(80, "Not charging"));
    Titles told{"Charging Paused"};
    ASSERT_TRUE(areShown(told));
    desktop->switchOn(wire::face::calendar::isConsentGiven);
    desktop->switchOn(wire::face::calendar::isTravelChargeOn);
    ASSERT_TRUE(becomes(99, 100));
    told.push_back("Charging to 100% for Travel");
    ASSERT_TRUE(areShown(told));
    EXPECT_EQ(desktop->lastBody(),
              "Velmora detected \"Flight to Lisbon\" in your calendar and is allowing a full charge.");

    for (const bool isWanted : {true, false})
        ASSERT_TRUE(peer.set({.isTemporaryOverride = isWanted, .lowBatteryLimit = Desktop::lowBatteryLimit}));
    ASSERT_TRUE(becomes(78, 80));
    logIn();
    plug(false);
    told.push_back("Power Source Changed");
    ASSERT_TRUE(areShown(told)) << "once an event, though it was taken back and the program restarted";
    EXPECT_EQ(end(), 80);
}

} // namespace
} // namespace velmora
