// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// A window's main button, filled with its tint; a change of tint is animated.
PressButton {
    id: button

    property string symbol
    property color tint: Theme.colors.accent

    opacity: enabled ? 1 : 0.5
    padding: 8
    topPadding: Theme.room(9)
    bottomPadding: Theme.room(9)
    font: Theme.typography.headlineFont

    Behavior on tint {
        ColorAnimation {
            duration: 350
            easing.type: Easing.InOutQuad
        }
    }

    background: Rectangle {
        radius: button.ringRadius
        color: button.down ? Qt.darker(button.tint, 1.15) : button.hovered ? Qt.lighter(button.tint, 1.06) : button.tint
    }
    contentItem: RowLayout {
        spacing: 6

        Item {
            Layout.fillWidth: true
        }
        SymbolImage {
            name: button.symbol
            size: Math.round(button.font.pixelSize * 1.2)
            color: "white"
        }
        Label {
            Layout.fillWidth: true
            Layout.maximumWidth: Math.ceil(implicitWidth)
            text: button.text
            font: button.font
            fontSizeMode: Text.HorizontalFit
            color: "white"
            spoken: false
        }
        Item {
            Layout.fillWidth: true
        }
    }
}
