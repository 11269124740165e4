// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A button with a symbol; `text` is its accessible name.
PressButton {
    id: button

    required property string symbol
    property real symbolSize: 16

    padding: 6
    ringRadius: 6
    background: Rectangle {
        radius: button.ringRadius
        color: button.down ? Theme.colors.pressed : button.hovered ? Theme.colors.hover : "transparent"
    }
    contentItem: SymbolImage {
        name: button.symbol
        size: button.symbolSize
        color: button.hovered || button.down ? Theme.colors.primary : Theme.colors.secondary
    }
}
