// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Tells desktops whose the windows are: the desktop entry by its name on Wayland, and on X11, where WM_CLASS
/// is the entry's StartupWMClass, the icon itself too. Once the QGuiApplication is there.
void identifyWindows();

} // namespace velmora
