// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// A page of the dashboard below its title.
ScrollColumn {
    id: page

    required property RemoteModel battery
    property string title
    property string subtitle
    property alias accessories: beside.data ///< beside the title

    padding: 24
    spacing: 16
    stretches: true

    RowLayout {
        Layout.fillWidth: true
        visible: page.title
        spacing: 16

        ColumnLayout {
            spacing: 2

            Label {
                objectName: "title"
                Layout.fillWidth: true
                text: page.title
                font: Theme.font(22, Font.Bold)
                Accessible.role: Accessible.Heading
            }
            Label {
                objectName: "subtitle"
                Layout.fillWidth: true
                visible: text
                text: page.subtitle
                font: Theme.font(11, Font.Normal)
                color: Theme.colors.secondary
                wrapMode: Text.Wrap
            }
        }
        Row {
            id: beside
        }
    }
}
