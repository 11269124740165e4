// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The background of a group of items.
ContinuousRectangle {
    radius: 10
    color: Theme.grey(Theme.dark ? 1 : 0, Theme.dark ? 0.05 : 0.03)
    edgeColor: Theme.grey(Theme.dark ? 1 : 0, Theme.dark ? 0.08 : 0.06)
    edgeWidth: 0.5
}
