// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// How full the battery is, whether it charges, and the button that fills it up once.
PodBackground {
    id: status

    required property RemoteModel battery

    implicitHeight: column.implicitHeight + 2 * column.anchors.topMargin

    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.margins: 14
        anchors.topMargin: Theme.room(14)
        anchors.bottomMargin: Theme.room(14)
        spacing: Theme.room(12)

        ColumnLayout {
            spacing: 0

            Label {
                objectName: "percentage"
                Layout.fillWidth: true
                text: Texts.percentage(status.battery.percentage)
                font: Theme.typography.statusFont
            }
            RowLayout {
                spacing: 6

                Rectangle {
                    objectName: "chargingDot"
                    implicitWidth: 6
                    implicitHeight: 6
                    radius: 3
                    color: Theme.color(Texts.chargingColor(status.battery.chargingState))
                }
                Label {
                    objectName: "chargingWord"
                    Layout.fillWidth: true
                    text: Texts.chargingWord(status.battery.chargingState)
                    color: Theme.colors.secondary
                }
            }
        }
        ProminentButton {
            objectName: "quickCharge"
            focus: true // where keyboard and screen reader begin
            Layout.fillWidth: true
            text: Texts.quickChargeTitle(status.battery.isTemporaryOverrideEnabled)
            symbol: Texts.quickChargeSymbol(status.battery.isTemporaryOverrideEnabled)
            tint: Theme.color(Texts.quickChargeTint(status.battery.isTemporaryOverrideEnabled))
            onClicked: status.battery.toggleTemporaryOverride()
        }
    }
}
