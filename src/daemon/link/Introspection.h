// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>
#include <vector>

namespace velmora {

/// The daemon's object described in the XML of D-Bus introspection, from the same tables that serve it: names
/// and directions of all arguments, and each message's full selector as annotation `app.velmora.Selector`,
/// where it has one.
std::string daemonIntrospection();

/// Likewise one battery's object, and the folder of the batteries, which has these `children`.
std::string batteryIntrospection();
std::string batteryFolderIntrospection(const std::vector<std::string>& children);

} // namespace velmora
