// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/WindowManager.h"

#include "base/Handle.h"

#include <QGuiApplication>
#include <cstdlib>
#include <string>
#include <string_view>
#include <xcb/xcb.h>

namespace velmora {

namespace {

template <typename Reply>
using Owned = Handle<Reply, std::free>;

/// The first bytes of a window's property; empty where it has none.
std::string property(xcb_connection_t* server, xcb_window_t window, std::string_view name)
{
    constexpr std::uint32_t longest = 16; // words
    const auto asked = xcb_intern_atom(server, true, static_cast<std::uint16_t>(name.size()), name.data());
    const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(server, asked, nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE) return {};
    const auto cookie =
        xcb_get_property(server, false, window, atom->atom, XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
    const Owned<xcb_get_property_reply_t> value(xcb_get_property_reply(server, cookie, nullptr));
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
        const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        return x11 && x11->connection() && nameOfManager(x11->connection()) == "wlroots wm";
    }();
    return answer;
}

} // namespace velmora
