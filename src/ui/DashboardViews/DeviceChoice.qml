// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// One of the user's machines, to select. In a list the arrow keys lead to it, not the tabulator.
PressButton {
    id: choice

    required property string identifier
    required property string name
    required property string status
    required property string battery
    required property string symbol
    required property string tint ///< a name of Theme.color
    property bool selected: false

    focusPolicy: Qt.ClickFocus
    objectName: "device" + identifier
    text: Texts.filled(qsTr("%1: %2, %3"), [name, status, battery])
    padding: 8
    checkable: true
    autoExclusive: true // a click on the selected one leaves it so
    checked: selected

    background: Rectangle {
        radius: choice.ringRadius
        color: Theme.rowColor(choice.selected, choice.down, choice.hovered)
    }
    contentItem: DeviceRow {
        name: choice.name
        status: choice.status
        battery: choice.battery
        icon: choice.symbol
        tint: Theme.color(choice.tint)
        Accessible.ignored: true
    }
}
