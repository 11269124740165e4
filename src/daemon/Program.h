// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Runs velmorad until SIGTERM or SIGINT: the daemon over this machine's files and the system bus, with what
/// it remembers in $STATE_DIRECTORY (/var/lib/velmora without it). Returns the exit status: 0 after a signal,
/// 1 where the bus is not to be had, denies the name, or hangs up.
int runDaemon();

} // namespace velmora
