// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// One thing that Velmora does and others do not. A reader hears all of it at once.
RowLayout {
    id: row

    required property string symbol
    required property string title
    required property string subtitle

    spacing: 12
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("%1: %2").arg(title).arg(subtitle)

    Item {
        implicitWidth: 28
        implicitHeight: 28
        Layout.alignment: Qt.AlignTop

        SymbolImage {
            anchors.centerIn: parent
            name: row.symbol
            size: 22
            color: Theme.colors.accent
        }
    }
    ColumnLayout {
        spacing: 1

        Label {
            Layout.fillWidth: true
            text: row.title
            font: Theme.typography.headlineFont
            wrapMode: Text.Wrap
            spoken: false
        }
        Label {
            Layout.fillWidth: true
            text: row.subtitle
            font: Theme.font(11, Font.Normal)
            color: Theme.colors.secondary
            wrapMode: Text.Wrap
            spoken: false
        }
    }
}
