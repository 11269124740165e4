// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayAdvice.h"

#include "SessionTest.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// The stranger is GNOME Shell, and shows notices as it does.
struct TrayAdviceTest : SessionTest {
    TrayAdviceTest()
    {
        for (const auto* path : {"/org/gnome/Shell", "/org/freedesktop/Notifications"})
            dbus::check(sd_bus_add_object(stranger.get(), nullptr, path,
                                          dbus::serve<TrayAdviceTest, &TrayAdviceTest::called>, this),
                        path);
        own(stranger.get(), "org.freedesktop.Notifications");
    }

    int called(sd_bus_message* message)
    {
        if (sd_bus_message_is_method_call(message, "org.freedesktop.Notifications", "Notify") > 0) {
            const char* body = nullptr;
            sd_bus_message_read(message, "susss", nullptr, nullptr, nullptr, nullptr, &body);
            notices.emplace_back(body);
            return sd_bus_reply_method_return(message, "u", 1U);
        }
        ++questions;
        return state < 0 ? sd_bus_reply_method_return(message, "a{sv}", 0)
                         : sd_bus_reply_method_return(message, "a{sv}", 2, "uuid", "s", "velmora@velmora.app",
                                                      "state", "d", state);
    }

    /// Of a start of Velmora.
    void giveAdvice()
    {
        advice.emplace(application.get(), machine.preferences);
        advice->give();
        ask(call("org.freedesktop.DBus.Peer", "Ping"));
        ask(call("org.freedesktop.DBus.Peer", "Ping")); // by now all that was to be said has been
    }

    FakePlatform machine;
    std::optional<TrayAdvice> advice;
    std::vector<std::string> notices;
    double state = 1; ///< of the extension; negative: it is not installed
    int questions = 0;
};

TEST_F(TrayAdviceTest, IsGivenOnceOnGnomeWhereVelmoraIsNotInQuickSettings)
{
    giveAdvice();
    EXPECT_EQ(questions, 0) << "no GNOME";
    own(stranger.get(), "org.gnome.Shell");
    giveAdvice();
    EXPECT_EQ(questions, 1);
    EXPECT_THAT(notices, ElementsAre()) << "the extension runs";
    state = -1;
    giveAdvice();
    EXPECT_THAT(notices, ElementsAre(HasSubstr("install the package gnome-shell-extension-velmora")));
    state = 2;
    giveAdvice();
    EXPECT_EQ(notices.size(), 1U) << "said before";
    machine.preferences->set(preference_key::hasSeenGnomeAdvice, false);
    giveAdvice();
    EXPECT_THAT(notices.back(), HasSubstr("gnome-extensions enable velmora@velmora.app"));
}

} // namespace
} // namespace velmora
