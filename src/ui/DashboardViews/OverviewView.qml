// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The battery at a glance.
DashboardPage {
    id: page

    OverviewHeader {
        Layout.fillWidth: true
        battery: page.battery
    }
    GridLayout {
        Layout.fillWidth: true
        columns: 2
        columnSpacing: 16
        rowSpacing: 16

        DashboardPod {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            title: qsTr("Battery Health")
            value: "94%"
            detail: qsTr("Optimal Condition")
            icon: "heart.fill"
            tint: Theme.colors.accent
        }
        DashboardPod {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            title: qsTr("Cycles")
            value: "242"
            detail: qsTr("858 Remaining")
            icon: "arrow.triangle.2.circlepath"
            tint: Theme.colors.blue
        }
    }
    Item {
        Layout.fillHeight: true
    }
}
