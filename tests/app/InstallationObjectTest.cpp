// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "InstallationObject.h"

#include "SessionTest.h"

namespace velmora {
namespace {

namespace wired = wire::face::installation;

struct InstallationObjectTest : SessionTest {
    int changed(sd_bus_message* signal)
    {
        dbus::check(sd_bus_message_skip(signal, "s"), "skip");
        announced.push_back(dbus::readArchive(signal));
        return 0;
    }

    FakePlatform machine;
    InstallationManager manager;
    InstallationObject object{loop, application.get(), manager};
    std::vector<KeyedArchive> announced; ///< what of it is no list, a signal each
};

TEST_F(InstallationObjectTest, TellsAnInstallationAsItGoes)
{
    const auto match =
        dbus::match(stranger.get(), "type='signal',member='PropertiesChanged'",
                    dbus::serve<InstallationObjectTest, &InstallationObjectTest::changed>, this);
    for (int press = 0; press < 2; ++press) ask(call(wired::interface, wired::install, wired::objectPath));
    EXPECT_EQ(lastError, "");
    ASSERT_TRUE(eventually([&] { return !announced.empty(); }));
    KeyedArchive begun;
    begun.encode("isInstalling", true);
    begun.encode("installationProgress", 0.1);
    EXPECT_EQ(announced, std::vector{begun});

    ASSERT_EQ(machine.serviceManager->prompts.size(), 1U);
    machine.serviceManager->prompts.front()({{ServiceManager::ErrorCode::alreadyRegistered, ""}});
    ASSERT_TRUE(eventually([&] { return announced.size() > 1; }));
    KeyedArchive ended;
    ended.encode("isInstallationCompleted", true);
    ended.encode("isInstalling", false);
    ended.encode("installationProgress", 0.0);
    EXPECT_EQ(announced.back(), ended);

    const auto get = call("org.freedesktop.DBus.Properties", "Get", wired::objectPath);
    dbus::check(sd_bus_message_append(get.get(), "ss", wired::interface, "installationError"), "append");
    const auto error = ask(get);
    const char* text = nullptr;
    EXPECT_GT(sd_bus_message_read(error.get(), "v", "as", 1, &text), 0);
    EXPECT_STREQ(text, "") << "one, and it is empty";
}

} // namespace
} // namespace velmora
