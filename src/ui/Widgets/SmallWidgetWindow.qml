// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The small desktop widget: how full the battery is, and what it does.
WidgetWindow {
    id: window

    title: qsTr("Velmora Small Widget")
    plainWidth: 160
    settings: Widgets.small
    accessibleName: battery.accessibleName

    ColumnLayout {
        anchors.centerIn: parent
        width: parent.width
        spacing: 0

        WidgetRing {
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: 4
            battery: window.battery
            magnification: window.magnification
        }
        Label {
            objectName: "percentage"
            Layout.alignment: Qt.AlignHCenter
            text: window.battery.levelText
            font: Theme.font(22, Font.Bold)
            spoken: false
        }
        Label {
            objectName: "state"
            Layout.alignment: Qt.AlignHCenter
            Layout.maximumWidth: parent.width
            text: window.battery.stateText
            font: Theme.font(11, Font.DemiBold)
            color: Theme.colors.secondary
            spoken: false
        }
    }
}
