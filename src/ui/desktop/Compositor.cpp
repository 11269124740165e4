// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Compositor.h"

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

xcb_window_t ownerOf(xcb_connection_t* server, std::string_view selection)
{
    const auto asked =
        xcb_intern_atom(server, true, static_cast<std::uint16_t>(selection.size()), selection.data());
    const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(server, asked, nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE) return XCB_NONE;
    const Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(server, xcb_get_selection_owner(server, atom->atom), nullptr));
    return owner ? owner->owner : XCB_NONE;
}

} // namespace

bool isCompositing()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection()) // "offscreen" has the first without the second
        return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    // Qt offers one X screen, the display's first: its monitors are parts of that.
    return ownerOf(x11->connection(), "_NET_WM_CM_S0") != XCB_NONE;
}

} // namespace velmora
