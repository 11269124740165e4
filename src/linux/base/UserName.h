// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <string>
#include <sys/types.h>

namespace velmora {

/// Name of a user of this machine, for the log; empty for one that /etc/passwd does not have. Directories on
/// the network are not asked, which could take seconds.
std::string localUserName(uid_t user);

} // namespace velmora
