// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/X11.h"

#include <QGuiApplication>

namespace velmora::x11 {

xcb_connection_t* server()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr; // null for "offscreen", too
}

xcb_atom_t atom(xcb_connection_t* server, std::string_view name)
{
    const auto asked = xcb_intern_atom(server, false, static_cast<std::uint16_t>(name.size()), name.data());
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(server, asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace velmora::x11
