// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Runs velmorad until SIGTERM or SIGINT: the daemon over this machine's files and the system bus, with what
/// it remembers in $STATE_DIRECTORY (/var/lib/velmora without it). Returns the exit status: 0 after a signal,
/// 1 where there is no system bus, where it refuses the service name, or when it closes the connection.
int runDaemon();

} // namespace velmora
