// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Returns large blocks, such as a history, to the kernel as soon as they are freed. To be called at the
/// beginning of `main`, while there is one thread.
void keepHeapSmall();

} // namespace velmora
