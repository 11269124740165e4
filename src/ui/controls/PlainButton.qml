// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A button with text and no frame.
PressButton {
    id: button

    property color color: Theme.colors.secondary

    leftPadding: 8
    rightPadding: 8
    topPadding: 5
    bottomPadding: 5
    ringRadius: 6
    background: Rectangle {
        radius: button.ringRadius
        color: button.down ? Theme.colors.pressed : button.hovered ? Theme.colors.hover : "transparent"
    }
    contentItem: Label {
        text: button.text
        font: button.font
        color: button.hovered || button.down ? Theme.colors.primary : button.color
        spoken: false
    }
}
