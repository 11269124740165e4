// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// One of the user's machines, to select or deselect.
PressButton {
    id: choice

    required property var modelData
    readonly property string identifier: modelData.id
    property bool selected: false

    Layout.fillWidth: true
    objectName: "device" + identifier
    text: qsTr("%1: %2, %3").arg(modelData.name).arg(modelData.status).arg(modelData.battery)
    padding: 8
    checkable: true
    checked: selected

    background: Rectangle {
        radius: choice.ringRadius
        color: Theme.rowColor(choice.selected, choice.down, choice.hovered)
    }
    contentItem: DeviceRow {
        name: choice.modelData.name
        status: choice.modelData.status
        battery: choice.modelData.battery
        icon: "bolt.ring.closed"
        Accessible.ignored: true
    }
}
