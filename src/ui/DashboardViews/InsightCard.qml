// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// Advice. Screen readers read all of it at once.
PodBackground {
    id: card

    required property string title
    required property string message
    required property string severity

    readonly property color tint: {
        if (severity === "optimal")
            return Theme.colors.batteryGreen;
        return severity === "warning" ? Theme.colors.batteryWarning : Theme.colors.batteryDanger;
    }

    implicitHeight: row.implicitHeight + 24
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("%1: %2").arg(title).arg(message)

    RowLayout {
        id: row

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 12
        anchors.verticalCenter: parent.verticalCenter
        spacing: 12

        SymbolImage {
            name: card.severity === "optimal" ? "checkmark.circle.fill" : "bolt.heart.fill"
            size: Math.round(20 * Theme.fontScale)
            color: card.tint
        }
        ColumnLayout {
            spacing: 2

            Label {
                Layout.fillWidth: true
                text: card.title
                font: Theme.typography.headlineFont
                spoken: false
            }
            Label {
                Layout.fillWidth: true
                text: card.message
                font: Theme.font(11, Font.Normal)
                color: Theme.colors.secondary
                wrapMode: Text.Wrap
                spoken: false
            }
        }
    }
}
