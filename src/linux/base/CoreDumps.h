// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <sys/types.h>

namespace velmora {

/// From now on a crash of this process, or of one that it starts, leaves no memory image on a disk: it would
/// hold what was read from the secret store. To be called once, before other threads start.
void forbidCoreDumps();

/// A child that has no secrets gets the limit back that this process was started with.
void allowCoreDumpsOf(pid_t child);

} // namespace velmora
