// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SystemTest.h"
#include "wire/ChargerInterface.h"

#include <functional>
#include <sys/wait.h>

namespace velmora {
namespace {

struct SettingsTest : SystemTest {
    SettingsTest()
    {
        layLaptop();
        startDaemon();
    }

    /// Runs `work` as another user in a process of its own; its exit status, or -1.
    static int asUser(uid_t user, const std::function<int()>& work)
    {
        const pid_t child = fork();
        if (child == 0) _exit(setgid(user) == 0 && setuid(user) == 0 ? work() : 99);
        int status = 0;
        return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

TEST_F(SettingsTest, TheDaemonDescribesItselfWithEveryNameTypeAndSelector)
{
    const auto xml = peer.introspection();
    const auto expectNamed = [&](const wire::Message& message) {
        EXPECT_NE(xml.find("\"" + message.member() + "\""), xml.npos) << message.selector << xml;
        const std::string selector = message.selector;
        EXPECT_EQ(xml.find("app.velmora.Selector\" value=\"" + selector) != xml.npos,
                  selector.ends_with(':'));
        for (const auto& arguments : {message.arguments, message.reply})
            for (const auto& [name, type] : arguments)
                EXPECT_NE(xml.find(std::string("<arg name=\"") + name + "\" type=\"" + type), xml.npos)
                    << name;
    };
    for (const auto* message : wire::daemon_protocol::messages) expectNamed(*message);
    for (const auto* message : wire::charger::messages) expectNamed(*message);
    expectNamed(wire::charger::settingsChanged);
    expectNamed(wire::charger::changeRefused);
    expectNamed(wire::charger::occurred);
    expectNamed(wire::client_protocol::batteryStateDidChange);
    for (const auto* property : {"EndThreshold\" type=\"x", "Batteries\" type=\"s", "Health\" type=\"d"})
        EXPECT_NE(xml.find(std::string("<property name=\"") + property), xml.npos) << property << xml;
}

TEST_F(SettingsTest, AnotherUserMayReadIsRefusedAndAloneToldTheTruth)
{
    if (geteuid() != 0) GTEST_SKIP() << "only root can be somebody else";
    ASSERT_TRUE(becomes(78, 80));
    ASSERT_TRUE(peer.set({}));
    ASSERT_TRUE(eventually([this] { return !peer.pushes.empty(); })) << "the first one is for all";
    peer.pushes.clear();
    const int outcome = asUser(65534, [] {
        EventLoop ownLoop;
        Peer own(ownLoop);
        if (!own.state() || !own.history()) return 1;
        own.send({.customChargeLimit = 90});
        if (own.ask(own.call(wire::daemon_protocol::toggleCharging))) return 2;
        if (own.lastError != "org.freedesktop.DBus.Error.AccessDenied") return 3;
        while (own.pushes.empty()) ownLoop.runOnce(std::chrono::seconds{30});
        return own.pushes.size() == 1 && own.pushes.front().customChargeLimit == 80 ? 0 : 4;
    });
    EXPECT_EQ(outcome, 0);
    EXPECT_EQ(peer.state()->customChargeLimit, 80);
    while (loop.runOnce(std::chrono::milliseconds{0})) {
    }
    EXPECT_TRUE(peer.pushes.empty());
    EXPECT_EQ(end(), 80);
    EXPECT_NE(log().find("(user 65534"), std::string::npos);
}

} // namespace
} // namespace velmora
