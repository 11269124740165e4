// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The window around the panel. `Windows` places it.
Window {
    id: window

    required property RemoteModel battery

    title: qsTr("Velmora")
    width: 320
    height: 450
    minimumWidth: width
    maximumWidth: width
    minimumHeight: height
    maximumHeight: height
    flags: Qt.Tool | Qt.FramelessWindowHint | Qt.WindowStaysOnTopHint
    color: Appearance.translucent ? "transparent" : Theme.colors.controlBackground

    MenuBarView {
        anchors.fill: parent
        focus: true
        battery: window.battery
        backgroundOpacity: Appearance.translucent ? 0.95 : 1
        onDismissed: window.close()
    }
}
