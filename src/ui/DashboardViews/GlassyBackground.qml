// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The background of floating cards. Its shadow lies outside of the item.
ContinuousRectangle {
    anchors.fill: parent
    anchors.margins: -inset
    inset: 16
    radius: 14
    color: Theme.grey(Theme.dark ? 0.15 : 0.98, Theme.dark ? 0.6 : 0.9)
    edgeColor: Theme.grey(Theme.dark ? 1 : 0, Theme.dark ? 0.12 : 0.08)
    edgeWidth: 0.5
    shadowColor: Theme.grey(0, 0.08)
    shadowOffset: 4
    shadowRadius: 12
}
