// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// What can be done with a widget. It fits into the smallest one.
PlainMenu {
    id: menu

    required property RemoteWidget settings

    signal dashboardWanted
    signal closeWanted

    title: qsTr("Widget")
    margins: 4
    implicitWidth: Math.round(146 * Math.max(1, Theme.fontScale))

    PlainMenuItem {
        objectName: "pin"
        text: qsTr("Keep on Top")
        isChoice: true
        ticked: menu.settings.isPinned
        onTriggered: menu.settings.set("isPinned", !menu.settings.isPinned)
    }
    PlainMenuItem {
        objectName: "atLogIn"
        text: qsTr("Show at Log-in")
        isChoice: true
        ticked: menu.settings.isShownAtLogIn
        onTriggered: menu.settings.set("isShownAtLogIn", !menu.settings.isShownAtLogIn)
    }
    PlainMenuItem {
        objectName: "openDashboard"
        text: qsTr("Open Dashboard")
        onTriggered: menu.dashboardWanted()
    }
    PlainMenuItem {
        objectName: "close"
        text: qsTr("Close")
        onTriggered: menu.closeWanted()
    }
}
