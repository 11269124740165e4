// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// What the battery does, in words and as a ring.
RowLayout {
    id: header

    required property RemoteModel battery

    spacing: 16

    ColumnLayout {
        spacing: 3

        Label {
            Layout.fillWidth: true
            text: qsTr("System Intelligence")
            font: Theme.font(22, Font.Bold)
            Accessible.role: Accessible.Heading
        }
        Label {
            objectName: "statusLine"
            Layout.fillWidth: true
            text: header.battery.statusLine
            font: Theme.font(11, Font.Normal)
            color: Theme.colors.secondary
        }
    }
    Item { // a layout would round its size
        implicitWidth: visualizer.implicitWidth
        implicitHeight: visualizer.implicitHeight

        BatteryVisualizer {
            id: visualizer

            objectName: "visualizer"
            magnification: 1.2
            percentage: header.battery.percentage
            isCharging: header.battery.chargingState === "Charging"
            isLimitReached: header.battery.isLimitReached
        }
    }
}
