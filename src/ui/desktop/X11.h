// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Handle.h"

#include <cstdlib>
#include <string_view>
#include <xcb/xcb.h>

/// Qt's own connection to the X server. Main thread only.
namespace velmora::x11 {

/// A reply, which its reader frees.
template <typename T>
using Reply = Handle<T, std::free>;

/// Null where windows are shown by something else.
xcb_connection_t* server();

/// The atom of this name, made where there is none; waits for the server.
xcb_atom_t atom(xcb_connection_t* server, std::string_view name);

} // namespace velmora::x11
