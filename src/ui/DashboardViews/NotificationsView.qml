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

    SettingsGroup {
        Layout.fillWidth: true

        ToggleRow {
            objectName: "notifyOnLimit"
            Layout.fillWidth: true
            title: qsTr("Charge limit")
            subtitle: qsTr("The battery has reached its limit, or charges again.")
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
            subtitle: qsTr("The charger was plugged in or pulled out.")
            isOn: page.battery.notifyOnPowerChange
            onFlipped: on => page.battery.set("notifyOnPowerChange", on)
        }
        SeparatorLine {
            Layout.fillWidth: true
        }
        ToggleRow {
            objectName: "notifyOnHeat"
            Layout.fillWidth: true
            title: qsTr("Heat")
            subtitle: qsTr("The laptop has become hot.")
            isOn: page.battery.notifyOnHeat
            onFlipped: on => page.battery.set("notifyOnHeat", on)
        }
        SeparatorLine {
            Layout.fillWidth: true
        }
        ToggleRow {
            objectName: "notifyOnCycle"
            Layout.fillWidth: true
            title: qsTr("Charge cycles")
            subtitle: qsTr("The battery has completed a cycle.")
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
            subtitle: qsTr("The level has fallen to the threshold.")
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
