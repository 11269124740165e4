// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Taskbar.h"

#include "base/Handle.h"

#include <QGuiApplication>
#include <QWindow>
#include <array>
#include <cstdlib>
#include <string_view>
#include <xcb/xcb.h>

namespace velmora {

namespace {

xcb_atom_t atom(xcb_connection_t* server, std::string_view name)
{
    const auto asked = xcb_intern_atom(server, false, static_cast<std::uint16_t>(name.size()), name.data());
    const Handle<xcb_intern_atom_reply_t, std::free> reply(xcb_intern_atom_reply(server, asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace

void leaveTaskbar(QWindow& window)
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection()) return; // "offscreen" has the first without the second
    auto* server = x11->connection();
    const std::array states{atom(server, "_NET_WM_STATE_SKIP_TASKBAR"),
                            atom(server, "_NET_WM_STATE_SKIP_PAGER")};
    // Qt leaves states alone that it does not know.
    xcb_change_property(server, XCB_PROP_MODE_APPEND, static_cast<xcb_window_t>(window.winId()),
                        atom(server, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32, states.size(), states.data());
}

} // namespace velmora
