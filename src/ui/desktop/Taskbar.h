// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

class QWindow;

namespace velmora {

/// Asks the window manager to list the window neither in a taskbar nor in a pager, as a Qt::Tool would be;
/// one of those, however, some window managers hide while another program has the focus. To be called before
/// the window is shown. Does something on X11 alone: elsewhere a window cannot ask for that.
void leaveTaskbar(QWindow& window);

} // namespace velmora
