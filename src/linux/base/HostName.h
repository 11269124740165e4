// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>

namespace velmora {

/// What the user calls this machine: its pretty name of /etc/machine-info where there is one, else the
/// kernel's host name. One line of at most 64 characters' bytes, UTF-8; empty where it has no name. The
/// variable VELMORA_MACHINE_INFO names another file, as a simulated machine needs.
std::string hostName();

/// The value of PRETTY_HOSTNAME in the text of such a file; empty where there is none.
std::string prettyHostName(const std::string& machineInfo);

} // namespace velmora
