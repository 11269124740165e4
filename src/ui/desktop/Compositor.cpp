// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Compositor.h"

#include "desktop/X11.h"

#include <QGuiApplication>

namespace velmora {

namespace {

xcb_window_t ownerOf(xcb_connection_t* server, std::string_view selection)
{
    const auto asked = xcb_get_selection_owner(server, x11::atom(server, selection));
    const x11::Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(server, asked, nullptr));
    return owner ? owner->owner : XCB_NONE;
}

} // namespace

bool isCompositing()
{
    auto* server = x11::server();
    if (!server) return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    // Qt offers one X screen, the display's first: its monitors are parts of that.
    return ownerOf(server, "_NET_WM_CM_S0") != XCB_NONE;
}

} // namespace velmora
