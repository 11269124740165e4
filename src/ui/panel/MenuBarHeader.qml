// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The product's name, and whether the battery is protected.
RowLayout {
    id: header

    required property RemoteModel battery

    spacing: 7

    SymbolImage {
        name: "bolt.shield.fill"
        size: Math.round(20 * Theme.fontScale)
        color: Theme.gradients.primary.from
        endColor: Theme.gradients.primary.to
    }
    Label {
        Layout.fillWidth: true
        text: qsTr("Velmora")
        font: Theme.typography.headlineFont
    }
    Pill {
        objectName: "healthyPill"
        visible: header.battery.isAppleRecommendedModeEnabled
        text: qsTr("Healthy")
        font: Theme.font(10, Font.Bold)
        textColor: Theme.colors.batteryGreen
        color: Theme.faded(Theme.colors.batteryGreen, 0.15)
    }
}
