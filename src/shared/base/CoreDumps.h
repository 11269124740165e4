// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <sys/types.h>

namespace velmora {

/// From now on a crash of this process, or of one that it starts, leaves no memory image on a disk: it would
/// hold passwords that were typed, or read from the secret store. To be called once, before other threads
/// start.
void forbidCoreDumps();

/// Gives a child, which is no program of ours, the limit that this process had before `forbidCoreDumps`. What
/// it has started itself until then keeps the limit that it had. Any thread.
void restoreCoreDumps(pid_t child);

} // namespace velmora
