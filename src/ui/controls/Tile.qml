// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// A value with its name and symbol above it. Screen readers read both at once.
PodBackground {
    id: tile

    required property string label
    required property string symbol
    required property string value
    required property color valueColor
    property string accessibleName: qsTr("%1: %2").arg(label).arg(value)

    implicitHeight: column.implicitHeight + 2 * column.anchors.topMargin
    Accessible.role: Accessible.StaticText
    Accessible.name: accessibleName

    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.margins: 12
        anchors.topMargin: Theme.room(12)
        anchors.bottomMargin: Theme.room(12)
        spacing: Theme.room(4)

        RowLayout {
            spacing: 5

            SymbolImage {
                name: tile.symbol
                size: Math.round(14 * Theme.fontScale)
                color: tile.valueColor
            }
            Label {
                Layout.fillWidth: true
                text: tile.label
                font: Theme.font(11, Font.DemiBold)
                fontSizeMode: Text.HorizontalFit
                color: Theme.colors.secondary
                spoken: false
            }
        }
        Label {
            objectName: "value"
            Layout.fillWidth: true
            text: tile.value
            font: Theme.font(17, Font.Bold)
            fontSizeMode: Text.HorizontalFit
            color: tile.valueColor
            spoken: false
        }
    }
}
