// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// From now on a crash of this process, or of one that it starts, leaves no memory image on a disk: it would
/// hold passwords that were typed, or read from the secret store. To be called once, before other threads
/// start.
void forbidCoreDumps();

} // namespace velmora
