// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The ways into the dashboard and out of the program.
RowLayout {
    id: footer

    required property RemoteModel battery
    signal dashboardWanted

    spacing: 4

    PlainButton {
        objectName: "launchDashboard"
        Layout.leftMargin: -leftPadding
        text: qsTr("Launch Dashboard")
        font: Theme.font(12, Font.Normal)
        onClicked: footer.dashboardWanted()
    }
    Item {
        Layout.fillWidth: true
    }
    IconButton {
        id: gear

        objectName: "gear"
        symbol: "gearshape.fill"
        text: qsTr("Settings")
        Keys.onDownPressed: menu.openAtTick()
        Keys.onUpPressed: menu.openAtTick()
        onClicked: visualFocus ? menu.openAtTick() : menu.open()

        ThresholdMenu {
            id: menu

            objectName: "thresholds"
            battery: footer.battery
            limits: Texts.thresholds
            x: gear.width - width
            y: -height - 6
            onChosen: limit => footer.battery.set("customChargeLimit", limit)
            onSettingsWanted: footer.dashboardWanted()
        }
    }
    IconButton {
        objectName: "power"
        Layout.rightMargin: -padding
        symbol: "power"
        text: qsTr("Quit Velmora")
        onClicked: Requests.quit()
    }
}
