// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Whether the display is an X server whose window manager puts windows where it likes, as that of wlroots
/// does for XWayland: there, only a window that it does not manage stays where it is put. Asked once.
bool doesManagerIgnorePlaces();

} // namespace velmora
