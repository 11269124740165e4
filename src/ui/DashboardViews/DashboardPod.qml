// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// One figure with its name, its symbol and what it means. Screen readers read all of it at once.
PodBackground {
    id: pod

    required property string title
    required property string value
    required property string detail
    required property string icon
    required property color tint ///< the symbol's colour

    implicitWidth: column.implicitWidth + 32
    implicitHeight: column.implicitHeight + 32
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("%1: %2, %3").arg(title).arg(value).arg(detail)

    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.margins: 16
        spacing: 6

        RowLayout {
            spacing: 6

            SymbolImage {
                name: pod.icon
                size: Math.round(17 * Theme.fontScale)
                color: pod.tint
            }
            Label {
                Layout.fillWidth: true
                text: pod.title
                font: Theme.typography.headlineFont
                spoken: false
            }
        }
        Label {
            Layout.fillWidth: true
            text: pod.value
            font: Theme.font(28, Font.Bold)
            spoken: false
        }
        Label {
            Layout.fillWidth: true
            text: pod.detail
            font: Theme.typography.captionFont
            color: Theme.colors.secondary
            spoken: false
        }
    }
}
