// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// How fast the battery ages, and how warm the machine is.
RowLayout {
    id: row

    required property RemoteModel battery

    spacing: 8

    Tile {
        objectName: "degradation"
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        label: qsTr("Degradation")
        symbol: "heart.fill"
        value: row.battery.degradationText
        valueColor: Theme.color(row.battery.degradationColor)
        accessibleName: row.battery.degradationAccessibleName
    }
    Tile {
        objectName: "thermal"
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        label: qsTr("Thermal")
        symbol: "thermometer"
        value: Texts.thermalText(row.battery.thermalState)
        valueColor: Theme.color(Texts.thermalColor(row.battery.thermalState))
    }
}
