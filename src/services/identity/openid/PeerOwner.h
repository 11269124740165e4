// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <optional>
#include <sys/types.h>

namespace velmora::openid {

/// The user whose process is at the other end of a TCP connection over IPv4 within this computer, by the
/// kernel's own list. Nothing where that end has gone.
std::optional<uid_t> ownerOfPeer(int connection);

} // namespace velmora::openid
