// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

class QWindow;

namespace velmora {

/// Asks the window manager to leave the window out of taskbar and pager. A Qt::Tool would be left out as
/// well, but some window managers hide those while another program has the focus. To be called before the
/// window is shown. Works on X11 only: on Wayland a window cannot ask for it.
void leaveTaskbar(QWindow& window);

} // namespace velmora
