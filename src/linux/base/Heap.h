// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Has what is large, a history or what a flood of messages left, go back to the kernel once it is freed. For
/// the beginning of `main`, while there is one thread.
void keepHeapSmall();

} // namespace velmora
