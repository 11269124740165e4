// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>

namespace velmora {

/// The daemon's object described in the XML of D-Bus introspection, from the same tables that serve it: names
/// and directions of all arguments, and each message's full selector as annotation `app.velmora.Selector`,
/// where it has one.
std::string daemonIntrospection();

} // namespace velmora
