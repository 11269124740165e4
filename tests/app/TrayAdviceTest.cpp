// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayAdvice.h"

#include "SessionTest.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using testing::HasSubstr;

/// The stranger is GNOME Shell.
struct TrayAdviceTest : SessionTest {
    TrayAdviceTest()
    {
        dbus::check(sd_bus_add_object(stranger.get(), nullptr, "/org/gnome/Shell",
                                      dbus::serve<TrayAdviceTest, &TrayAdviceTest::called>, this),
                    "object");
    }

    int called(sd_bus_message* message)
    {
        ++questions;
        return state < 0 ? sd_bus_reply_method_return(message, "a{sv}", 0)
                         : sd_bus_reply_method_return(message, "a{sv}", 2, "uuid", "s", "velmora@velmora.app",
                                                      "state", "d", state);
    }

    /// The body of the notice after a start of Velmora; empty where none stands.
    std::string adviceGiven()
    {
        machine.notificationCenter->removeDelivered({TrayAdvice::identifier});
        advice.emplace(application.get());
        advice->give();
        ask(call("org.freedesktop.DBus.Peer", "Ping"));
        ask(call("org.freedesktop.DBus.Peer", "Ping")); // by now the shell has answered
        machine.settle();
        return standing();
    }
    std::string standing() const
    {
        const auto notices = machine.notificationCenter->standing();
        return notices.empty() ? "" : notices.front().body;
    }

    FakePlatform machine;
    std::optional<TrayAdvice> advice;
    double state = 1; ///< of the extension; negative: it is not installed
    int questions = 0;
};

TEST_F(TrayAdviceTest, IsGivenOnceWhereVelmoraIsOutOfSight)
{
    machine.notificationCenter->deliveryError = "nobody showed it";
    EXPECT_EQ(adviceGiven(), "");
    machine.notificationCenter->deliveryError.reset();
    machine.notificationCenter->holdsAnswers = true;
    EXPECT_EQ(adviceGiven(), "") << "there is no server yet";
    machine.notificationCenter->answer();
    machine.settle();
    EXPECT_THAT(standing(), HasSubstr("opens from the list of applications"));
    machine.notificationCenter->holdsAnswers = false;
    EXPECT_EQ(adviceGiven(), "") << "said before";
}

TEST_F(TrayAdviceTest, OnGnomeItIsHowToGetIntoQuickSettings)
{
    own(stranger.get(), "org.gnome.Shell");
    EXPECT_EQ(adviceGiven(), "") << "the extension runs";
    EXPECT_EQ(questions, 1);
    state = -1;
    EXPECT_THAT(adviceGiven(), HasSubstr("install the package gnome-shell-extension-velmora"));
    machine.preferences->set(preference_key::hasSeenGnomeAdvice, false);
    state = 2;
    EXPECT_THAT(adviceGiven(), HasSubstr("gnome-extensions enable velmora@velmora.app"));
}

} // namespace
} // namespace velmora
