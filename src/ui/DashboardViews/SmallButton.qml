// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A small button for secondary actions.
PressButton {
    id: button

    leftPadding: 10
    rightPadding: 10
    topPadding: 5
    bottomPadding: 5
    ringRadius: 7
    font: Theme.font(11, Font.DemiBold)
    opacity: enabled ? 1 : 0.4

    background: Rectangle {
        radius: button.ringRadius
        color: button.down ? Theme.colors.pressed : Theme.grey(Theme.dark ? 1 : 0, button.hovered ? 0.1 : 0.06)
    }
    contentItem: Label {
        text: button.text
        font: button.font
        spoken: false
    }
}
