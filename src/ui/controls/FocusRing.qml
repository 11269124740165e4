// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// Drawn around the control that has the keyboard focus.
Rectangle {
    property real gap: 3

    anchors.fill: parent
    anchors.margins: -gap
    color: "transparent"
    border.width: 2
    border.color: Theme.colors.focusRing
    radius: 8
}
