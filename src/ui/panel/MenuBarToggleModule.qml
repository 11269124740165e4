// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The two switches.
PodBackground {
    id: module

    required property RemoteModel battery
    readonly property bool autoProtect: battery.isAppleRecommendedModeEnabled
    property bool complete: false

    implicitHeight: column.implicitHeight + 2 * column.anchors.topMargin
    onAutoProtectChanged: if (complete)
        Requests.tapAlignment()
    Component.onCompleted: complete = true

    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        anchors.topMargin: Theme.room(12)
        anchors.bottomMargin: Theme.room(12)
        spacing: Theme.room(10)

        CheckmarkToggleStyle {
            objectName: "autoProtect"
            Layout.fillWidth: true
            text: qsTr("Auto-Protect")
            font: Theme.font(13, Font.Normal)
            caption: module.battery.limitCaption
            captionFont: Theme.font(11, Font.Normal)
            isOn: module.autoProtect
            onFlipped: on => module.battery.set("isAppleRecommendedModeEnabled", on)
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Theme.faded(Theme.colors.separator, 0.3)
        }
        PlainSwitch {
            objectName: "simulation"
            Layout.fillWidth: true
            text: qsTr("Demo Simulation")
            font: Theme.font(11, Font.Normal)
            color: Theme.colors.secondary
            isOn: module.battery.isSimulationModeEnabled
            onFlipped: on => module.battery.set("isSimulationModeEnabled", on)
        }
    }
}
