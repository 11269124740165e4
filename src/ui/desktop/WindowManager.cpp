// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/WindowManager.h"

#include "desktop/X11.h"

#include <string>

namespace velmora {

namespace {

/// The first bytes of a window's property; empty where it has none.
std::string property(xcb_connection_t* server, xcb_window_t window, std::string_view name)
{
    constexpr std::uint32_t longest = 16; // words
    const auto cookie = xcb_get_property(server, false, window, x11::atom(server, name),
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
    const x11::Reply<xcb_get_property_reply_t> value(xcb_get_property_reply(server, cookie, nullptr));
    if (!value) return {};
    const auto length = static_cast<std::size_t>(xcb_get_property_value_length(value.get()));
    return {static_cast<const char*>(xcb_get_property_value(value.get())), length};
}

std::string nameOfManager(xcb_connection_t* server)
{
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
    const auto check = property(server, root, "_NET_SUPPORTING_WM_CHECK");
    xcb_window_t window = XCB_NONE;
    if (check.size() != sizeof window) return {};
    check.copy(reinterpret_cast<char*>(&window), sizeof window);
    return property(server, window, "_NET_WM_NAME");
}

} // namespace

bool doesManagerIgnorePlaces()
{
    static const bool answer = [] {
        auto* server = x11::server();
        return server && nameOfManager(server) == "wlroots wm";
    }();
    return answer;
}

} // namespace velmora
