// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// Which notices Velmora posts.
DashboardPage {
    id: page

    title: qsTr("Notifications")
    subtitle: qsTr("What is worth a notice on the desktop")

    /// What a switch is for, and when it last did something.
    function caption(what: string, last: string): string {
        return last ? what + " " + last : what;
    }

    PodBackground {
        Layout.fillWidth: true
        implicitHeight: server.implicitHeight + 28

        RowLayout {
            id: server

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.margins: 14
            anchors.verticalCenter: parent.verticalCenter
            spacing: 12

            SymbolImage {
                name: "bell.badge.fill"
                size: Math.round(20 * Theme.fontScale)
                color: Theme.colors.accent
            }
            ColumnLayout {
                spacing: 2

                Label {
                    objectName: "serverText"
                    Layout.fillWidth: true
                    text: Notifications.serverText
                    font: Theme.typography.headlineFont
                    wrapMode: Text.Wrap
                }
                Label {
                    objectName: "testText"
                    Layout.fillWidth: true
                    visible: text
                    text: Notifications.testText
                    font: Theme.font(11, Font.Normal)
                    color: Theme.colors.secondary
                    wrapMode: Text.Wrap
                }
            }
            SmallButton {
                objectName: "sendTestNotice"
                enabled: Notifications.server || Notifications.isServerStartable
                text: qsTr("Send a test notice")
                onClicked: Notifications.sendTestNotice()
            }
        }
    }
    SettingsGroup {
        Layout.fillWidth: true

        ToggleRow {
            objectName: "notifyOnLimit"
            Layout.fillWidth: true
            title: qsTr("Charge limit")
            subtitle: page.caption(qsTr("Charging has stopped at the limit or at 100%, or goes on."), Notifications.lastLimit)
            isOn: page.battery.notifyOnLimit
            onFlipped: on => page.battery.set("notifyOnLimit", on)
        }
        SeparatorLine {
            Layout.fillWidth: true
        }
        ToggleRow {
            objectName: "notifyOnPowerChange"
            Layout.fillWidth: true
            title: qsTr("Power source")
            subtitle: page.caption(qsTr("The charger was plugged in or pulled out."), Notifications.lastPower)
            isOn: page.battery.notifyOnPowerChange
            onFlipped: on => page.battery.set("notifyOnPowerChange", on)
        }
        SeparatorLine {
            Layout.fillWidth: true
        }
        ToggleRow {
            objectName: "notifyOnHeat"
            Layout.fillWidth: true
            enabled: page.battery.pausesForHeat
            title: qsTr("Heat")
            subtitle: page.caption(page.battery.heatCaption, Notifications.lastHeat)
            isOn: page.battery.notifyOnHeat
            onFlipped: on => page.battery.set("notifyOnHeat", on)
        }
        SeparatorLine {
            Layout.fillWidth: true
        }
        ToggleRow {
            objectName: "notifyOnCycle"
            Layout.fillWidth: true
            enabled: page.battery.countsCycles
            title: qsTr("Charge cycles")
            subtitle: page.caption(page.battery.cycleCaption, Notifications.lastCycle)
            isOn: page.battery.notifyOnCycle
            onFlipped: on => page.battery.set("notifyOnCycle", on)
        }
    }
    SettingsGroup {
        Layout.fillWidth: true

        ToggleRow {
            objectName: "notifyOnLowBattery"
            Layout.fillWidth: true
            title: qsTr("Low battery")
            subtitle: page.caption(qsTr("The level has fallen to the threshold."), Notifications.lastLowBattery)
            isOn: page.battery.notifyOnLowBattery
            onFlipped: on => page.battery.set("notifyOnLowBattery", on)
        }
        SeparatorLine {
            Layout.fillWidth: true
        }
        PercentSlider {
            objectName: "lowBatteryLimit"
            Layout.fillWidth: true
            enabled: page.battery.notifyOnLowBattery
            title: qsTr("Low-battery threshold")
            current: page.battery.lowBatteryLimit
            from: 5 // both narrower than what the daemon takes: a notice outside would be of no use
            to: 50
            onChosen: value => page.battery.set("lowBatteryLimit", value)
        }
    }
    TravelGroup {
        Layout.fillWidth: true
    }
    Item {
        Layout.fillHeight: true
    }
}
