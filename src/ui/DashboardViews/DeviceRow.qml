// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// One of the user's machines: what it is called, what it does, how full it is.
RowLayout {
    id: row

    required property string name
    required property string status
    required property string icon
    required property string battery
    property color tint: Theme.colors.primary ///< the symbol's colour

    spacing: 10
    Accessible.role: Accessible.StaticText
    Accessible.name: Texts.filled(qsTr("%1: %2, %3"), [name, status, battery])

    Item {
        implicitWidth: 32
        implicitHeight: 32

        SymbolImage {
            anchors.centerIn: parent
            name: row.icon
            size: 20
            color: row.tint
        }
    }
    ColumnLayout {
        spacing: 1

        Label {
            Layout.fillWidth: true
            text: row.name
            font: Theme.font(13, Font.Bold)
            spoken: false
        }
        Label {
            Layout.fillWidth: true
            text: row.status
            font: Theme.typography.captionFont
            color: Theme.colors.secondary
            wrapMode: Text.Wrap
            spoken: false
        }
    }
    Pill {
        text: row.battery
        spoken: false
        verticalPadding: 4
        color: Theme.faded(Theme.colors.primary, 0.05)
    }
}
