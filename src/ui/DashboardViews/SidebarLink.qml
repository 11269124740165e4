// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// A page's name in the sidebar; marked while its page is shown.
ChoiceButton {
    id: link

    required property string title
    required property string symbol
    required property color tint
    required property string value   ///< its page's identifier
    required property string current ///< the identifier of the page that is shown
    readonly property bool selected: value === current

    text: title
    padding: 7
    leftPadding: 10
    rightPadding: 10
    checked: selected

    background: Rectangle {
        radius: link.ringRadius
        color: Theme.rowColor(link.selected, link.down, link.hovered)
    }
    contentItem: RowLayout {
        spacing: 10

        SymbolImage {
            name: link.symbol
            size: Math.round(17 * Theme.fontScale)
            color: link.tint
        }
        Label {
            Layout.fillWidth: true
            text: link.title
            font: Theme.font(13, link.selected ? Font.DemiBold : Font.Normal)
            spoken: false
        }
    }
}
