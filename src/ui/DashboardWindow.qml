// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The window around the dashboard, with the frame that the desktop gives it.
Window {
    id: window

    required property RemoteModel battery
    property alias selectedTab: view.selectedTab

    title: qsTr("Velmora Dashboard")
    width: 900
    height: 600
    minimumWidth: 900
    minimumHeight: 600
    color: Theme.colors.controlBackground

    DashboardView {
        id: view

        anchors.fill: parent
        focus: true
        battery: window.battery
    }
}
