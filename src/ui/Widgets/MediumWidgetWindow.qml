// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The medium desktop widget: how full the battery is and for how long, how healthy, and how warm the machine.
WidgetWindow {
    id: window

    title: qsTr("Velmora Medium Widget")
    plainWidth: 336
    firstTop: 16 + height // below the small one
    settings: Widgets.medium
    accessibleName: battery.accessibleSummary

    RowLayout {
        anchors.fill: parent
        spacing: 16

        WidgetRing {
            battery: window.battery
            magnification: 1.3 * window.magnification
        }
        ColumnLayout {
            spacing: 0

            Label {
                objectName: "percentage"
                text: window.battery.levelText
                font: Theme.font(28, Font.Bold)
                spoken: false
            }
            Label {
                objectName: "status"
                Layout.fillWidth: true
                text: window.battery.statusText
                font: Theme.font(11, Font.DemiBold)
                color: Theme.colors.secondary
                spoken: false
            }
            RowLayout {
                Layout.topMargin: 8
                spacing: 8

                Tile {
                    objectName: "health"
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    Accessible.ignored: true
                    label: qsTr("Health")
                    symbol: "heart.fill"
                    value: window.battery.healthText
                    valueColor: Theme.colors.batteryGreen
                }
                Tile {
                    objectName: "thermal"
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    Accessible.ignored: true
                    label: qsTr("Thermal")
                    symbol: "thermometer"
                    value: Texts.thermalText(window.battery.thermalState)
                    valueColor: Theme.color(Texts.thermalColor(window.battery.thermalState))
                }
            }
        }
    }
}
