// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LoopTest.h"
#include "PrivateBus.h"
#include "Process.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "TrayHost.h"
#include "XTray.h"
#include "tray/BatteryPicture.h"
#include "tray/TrayIcon.h"

#include <fstream>
#include <gmock/gmock.h>
#include <unistd.h>

namespace velmora {
namespace {

/// An X server of the test's own, which DISPLAY names.
class XEmbedIconTest : public LoopTest {
protected:
    /// On a display that no other test's server takes while this one's is down.
    void SetUp() override { startServer(":" + std::to_string(1'000 + getpid() % 30'000)); }

    /// On display `wanted`, such as ":7".
    void startServer(const std::string& wanted)
    {
        const auto command = folder.path() / "server", display = folder.path() / "display";
        std::filesystem::remove(display);
        std::ofstream(command) << "#!/bin/sh\ncommand -v Xvfb >/dev/null || { echo none >" << display.string()
                               << "; exit; }\nexec Xvfb " << wanted << " -nolisten tcp -displayfd 3 3>"
                               << display.string() << "\n";
        std::filesystem::permissions(command, std::filesystem::perms{0700});
        server.emplace(command, Process::Environment{}, folder.path() / "log");
        std::string number;
        ASSERT_TRUE(
            eventually([&] { return std::getline(std::ifstream(display), number) && !number.empty(); }));
        if (number == "none") GTEST_SKIP() << "Xvfb is not installed";
        setenv("DISPLAY", (":" + number).c_str(), 1);
        unsetenv("WAYLAND_DISPLAY");
    }

    void TearDown() override
    {
        unsetenv("DISPLAY");
        server->terminate();
    }

    void serve() override
    {
        LoopTest::serve();
        if (tray) tray->serve();
    }

    TemporaryFolder folder;
    std::optional<Process> server;
    RecordingLog log;
    std::unique_ptr<XTray> tray;
};

constexpr std::chrono::milliseconds patience{10};

TEST_F(XEmbedIconTest, LivesInWhicheverTrayIsThere)
{
    TrayIcon icon(loop, nullptr, log, patience);
    std::vector<ScreenPoint> clicks;
    icon.onActivate = [&](auto at) { clicks.push_back(at.value()); };
    const auto isShown = [&] { return icon.isShown(); };
    EXPECT_TRUE(eventually([&] { return log.count("No tray") == 1; }));

    tray = std::make_unique<XTray>(0xffffff, false);
    ASSERT_TRUE(eventually(isShown));
    tray->click(1, 700, 12);
    tray->click(4, 700, 12); // the wheel
    tray->click(3, 701, 13);
    EXPECT_TRUE(eventually([&] { return clicks.size() == 2; }));
    EXPECT_EQ(clicks, (std::vector<ScreenPoint>{{700, 12}, {701, 13}}));

    tray.reset();
    EXPECT_TRUE(eventually(std::not_fn(isShown)));
    tray = std::make_unique<XTray>(0, true);
    EXPECT_TRUE(eventually(isShown));

    tray.reset();
    server->terminate();
    EXPECT_TRUE(eventually(std::not_fn(isShown)));
}

TEST_F(XEmbedIconTest, ComesBackWithTheXServer)
{
    TrayIcon icon(loop, nullptr, log, std::chrono::milliseconds{100}); // and a quarter of a minute in all
    const auto isShown = [&] { return icon.isShown(); };
    tray = std::make_unique<XTray>(0, false);
    ASSERT_TRUE(eventually(isShown));
    tray.reset();
    server->terminate();
    ASSERT_TRUE(eventually([&] { return log.count("No tray") == 1; })) << "it was not there when looked for";
    startServer(std::getenv("DISPLAY"));
    tray = std::make_unique<XTray>(0, false);
    EXPECT_TRUE(eventually(isShown));
}

TEST_F(XEmbedIconTest, IsDrawnForTheBarItIsIn)
{
    const struct {
        const char* what;
        std::uint32_t ground;
        bool offersTransparency;
        Bar bar;
    } cases[] = {{"light bar", 0xf0f0f0, false, Bar::light},
                 {"dark bar", 0x202020, false, Bar::dark},
                 {"any bar", 0xf0f0f0, true, Bar::unknown}};
    for (const auto& [what, ground, offersTransparency, bar] : cases) {
        SCOPED_TRACE(what);
        tray = std::make_unique<XTray>(ground, offersTransparency);
        TrayIcon icon(loop, nullptr, log, patience);
        for (const bool isCharging : {false, true}) { // the second is drawn over the first
            icon.show({80, isCharging, ""});
            ASSERT_TRUE(eventually([&] { return icon.isShown(); }));
            const auto picture = drawBattery(80, isCharging, XTray::side, bar);
            const std::uint32_t bits = offersTransparency ? 0xffffffff : 0xffffff;
            const std::uint32_t empty = offersTransparency ? 0 : ground;
            EXPECT_TRUE(eventually([&] {
                const auto pixels = tray->pixels();
                for (std::size_t i = 0; i < pixels.size(); ++i) {
                    const auto alpha = picture.pixels[i] >> 24U;
                    if (alpha == 255 && (pixels[i] & bits) != (picture.pixels[i] & bits)) return false;
                    if (alpha == 0 && (pixels[i] & bits) != empty) return false;
                }
                return !pixels.empty();
            }));
        }
    }
}

TEST_F(XEmbedIconTest, MakesWayForTheDesktopsOwnTray)
{
    const PrivateBus bus;
    const auto session = dbus::openSystemBus(loop);
    tray = std::make_unique<XTray>(0, false);
    TrayIcon icon(loop, session.get(), log, patience);
    ASSERT_TRUE(eventually([&] { return icon.isShown(); }));
    TrayHost host(loop);
    host.appear();
    EXPECT_TRUE(eventually([&] { return tray->pixels().empty(); })); // the window is gone
    EXPECT_TRUE(icon.isShown());
    tray->icon = XCB_NONE;
    host.disappear();
    EXPECT_TRUE(eventually([&] { return tray->icon != XCB_NONE && icon.isShown(); }));
}

} // namespace
} // namespace velmora
