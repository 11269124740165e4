// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Taskbar.h"

#include "desktop/X11.h"

#include <QWindow>
#include <array>

namespace velmora {

void leaveTaskbar(QWindow& window)
{
    auto* server = x11::server();
    if (!server) return;
    const std::array states{x11::atom(server, "_NET_WM_STATE_SKIP_TASKBAR"),
                            x11::atom(server, "_NET_WM_STATE_SKIP_PAGER")};
    // Qt leaves states alone that it does not know.
    xcb_change_property(server, XCB_PROP_MODE_APPEND, static_cast<xcb_window_t>(window.winId()),
                        x11::atom(server, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32, states.size(), states.data());
}

} // namespace velmora
