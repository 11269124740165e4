// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Keyring.h"
#include "LoopTest.h"
#include "PrivateBus.h"
#include "wire/ModelFace.h"

#include <csignal>
#include <cstdlib>

namespace velmora {
namespace {

struct IdentityTest : LoopTest {
    PrivateBus bus;
    TemporaryFolder folder;
    std::optional<Process> velmora;
    dbus::Bus session;

    IdentityTest()
    {
        setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
        session = dbus::openSessionBus(loop);
    }
    ~IdentityTest() override { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    void logIn()
    {
        velmora.reset();
        const std::string home = folder.path();
        velmora.emplace(VELMORA_BIN "/velmora",
                        Process::Environment{{"XDG_CONFIG_HOME", home},
                                             {"XDG_DATA_HOME", home},
                                             {"XDG_RUNTIME_DIR", home},
                                             {"DISPLAY", ""},
                                             {"WAYLAND_DISPLAY", ""},
                                             {"VELMORA_LOG", "stderr"}},
                        folder.path() / "log");
    }
    bool isRunning()
    {
        const auto self = dbus::newCall(session.get(), wire::face::serviceName, wire::face::objectPath,
                                        "org.freedesktop.DBus.Peer", "Ping");
        return !sd_bus_message_is_method_error(answer(session.get(), self).get(), nullptr);
    }
    std::string filed() const { return folder.read("Velmora/device-identity"); }
};

TEST_F(IdentityTest, IsFoundBySecretToolAndOutlivesTheKeyring)
{
    if (!Keyring::isInstalled()) GTEST_SKIP() << "gnome-keyring-daemon or secret-tool is not installed";
    std::optional<Keyring> keyring(bus.address());
    const auto stored = [&] { return keyring->lookUp("app.velmora.identity", "device_uuid"); };
    logIn();
    ASSERT_TRUE(eventually([&] { return !filed().empty(); }));
    const auto identity = stored();
    EXPECT_EQ(identity + "\n", filed());

    keyring->signal(SIGSTOP);
    logIn();
    ASSERT_TRUE(eventually([this] { return isRunning(); }));
    EXPECT_EQ(velmora->terminate(), 0) << "nobody waits for a keyring that hangs";
    keyring.emplace(bus.address());
    logIn();
    ASSERT_TRUE(eventually([&] { return stored() == identity; })) << "a new keyring learns it";
    EXPECT_EQ(folder.read("log").find(identity), std::string::npos);
}

} // namespace
} // namespace velmora
