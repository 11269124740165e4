// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

namespace velmora {

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

} // namespace velmora
