// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The panel below the tray icon: what the battery does, at a glance, and what can be done about it.
FocusScope {
    id: panel

    required property RemoteModel battery
    /// Below 1 a compositor is needed; the corners are then round.
    property real backgroundOpacity: 0.95

    signal dismissed

    implicitWidth: 320
    implicitHeight: 450
    focus: true
    Keys.onEscapePressed: dismissed()

    ContinuousRectangle {
        readonly property bool blended: panel.backgroundOpacity < 1

        objectName: "background"
        anchors.fill: parent
        radius: blended ? 12 : 0
        color: Theme.faded(Theme.colors.controlBackground, panel.backgroundOpacity)
        edgeColor: Theme.colors.edge
        edgeWidth: 1
    }

    ScrollColumn {
        id: scroll

        objectName: "scroll"
        anchors.left: parent.left
        anchors.right: parent.right
        height: Math.min(contentHeight, footer.pinnedY)
        padding: 16
        spacing: Theme.room(16)

        MenuBarHeader {
            battery: panel.battery
        }
        RefusalLine {
            id: refusal

            battery: panel.battery
            font: Theme.font(11, Font.Normal)
        }
        MenuBarStatusModule {
            Layout.fillWidth: true
            battery: panel.battery
        }
        MenuBarHealthThermalRow {
            visible: !refusal.visible // for the room that the sentence takes
            battery: panel.battery
        }
        MenuBarToggleModule {
            Layout.fillWidth: true
            battery: panel.battery
        }
    }
    MenuBarFooter {
        id: footer

        /// Where it is when all else is too long.
        readonly property real pinnedY: panel.height - 16 - implicitHeight

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        y: scroll.height
        battery: panel.battery
        onDashboardWanted: Requests.openDashboard()
    }
}
