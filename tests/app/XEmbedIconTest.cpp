// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LoopTest.h"
#include "PrivateBus.h"
#include "Process.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "TrayHost.h"
#include "tray/BatteryPicture.h"
#include "tray/TrayIcon.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <gmock/gmock.h>
#include <memory>
#include <string_view>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace velmora {
namespace {

/// A system tray on the X server that DISPLAY names: one window that takes in one icon of `side` pixels.
class XTray {
public:
    static constexpr std::uint16_t side = 24;
    xcb_window_t icon = XCB_NONE;

    /// `ground` is its colour. With `offersTransparency` icons are asked for pixels that have it.
    XTray(std::uint32_t ground, bool offersTransparency)
    {
        const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(x_)).data;
        xcb_create_window(x_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, side, side, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &ground);
        xcb_map_window(x_, window_);
        if (offersTransparency) {
            const auto visual = transparentVisual(screen);
            xcb_change_property(x_, XCB_PROP_MODE_REPLACE, window_, atom("_NET_SYSTEM_TRAY_VISUAL"),
                                XCB_ATOM_VISUALID, 32, 1, &visual);
        }
        const auto selection = atom("_NET_SYSTEM_TRAY_S0");
        xcb_set_selection_owner(x_, window_, selection, XCB_CURRENT_TIME);
        xcb_client_message_event_t here{
            XCB_CLIENT_MESSAGE, 32, 0, screen->root, atom("MANAGER"), {.data32 = {0, selection, window_}}};
        send(screen->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY, here);
    }
    ~XTray() { xcb_disconnect(x_); }

    /// Takes in who asked for it.
    void serve()
    {
        while (const std::unique_ptr<xcb_generic_event_t, void (*)(void*)> event{xcb_poll_for_event(x_),
                                                                                 std::free}) {
            if ((event->response_type & 0x7fU) != XCB_CLIENT_MESSAGE) continue;
            icon = reinterpret_cast<const xcb_client_message_event_t&>(*event).data.data32[2];
            const std::uint32_t size[] = {side, side};
            xcb_reparent_window(x_, icon, window_, 0, 0);
            xcb_configure_window(x_, icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
            xcb_map_window(x_, icon);
            xcb_flush(x_);
        }
    }

    void click(std::uint8_t button, std::int16_t rootX, std::int16_t rootY)
    {
        xcb_button_press_event_t press{};
        press.response_type = XCB_BUTTON_PRESS;
        press.detail = button;
        press.root_x = rootX;
        press.root_y = rootY;
        send(icon, XCB_EVENT_MASK_BUTTON_PRESS, press);
    }

    /// What the icon's window shows; empty where nobody can see it.
    std::vector<std::uint32_t> pixels()
    {
        const auto question = xcb_get_image(x_, XCB_IMAGE_FORMAT_Z_PIXMAP, icon, 0, 0, side, side, ~0U);
        auto* image = xcb_get_image_reply(x_, question, nullptr);
        if (!image) return {};
        std::vector<std::uint32_t> read(static_cast<std::size_t>(side * side));
        std::memcpy(read.data(), xcb_get_image_data(image), read.size() * 4);
        std::free(image);
        return read;
    }

private:
    template <typename Event>
    void send(xcb_window_t to, std::uint32_t mask, const Event& event)
    {
        char bytes[32]{};
        std::memcpy(bytes, &event, sizeof event);
        xcb_send_event(x_, false, to, mask, bytes);
        xcb_flush(x_);
    }

    xcb_atom_t atom(std::string_view name)
    {
        const auto question =
            xcb_intern_atom(x_, false, static_cast<std::uint16_t>(name.size()), name.data());
        auto* reply = xcb_intern_atom_reply(x_, question, nullptr);
        const auto atom = reply->atom;
        std::free(reply);
        return atom;
    }

    static xcb_visualid_t transparentVisual(const xcb_screen_t* screen)
    {
        for (auto depths = xcb_screen_allowed_depths_iterator(screen); depths.rem; xcb_depth_next(&depths))
            if (depths.data->depth == 32) return xcb_depth_visuals(depths.data)->visual_id;
        return XCB_NONE;
    }

    xcb_connection_t* x_ = xcb_connect(nullptr, nullptr);
    xcb_window_t window_ = xcb_generate_id(x_);
};

/// An X server of the test's own, which DISPLAY names.
struct XEmbedIconTest : LoopTest {
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
    const std::tuple<const char*, std::uint32_t, bool, Bar> cases[] = {
        {"light bar", 0xf0f0f0, false, Bar::light},
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
