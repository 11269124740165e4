// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Whether a compositor blends windows with what lies behind them. Always on Wayland; on X11 where a
/// compositing manager runs now.
bool isCompositing();

} // namespace velmora
