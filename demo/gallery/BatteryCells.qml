// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The ring in each of its fills, alone and around the bolt, and the product's mark.
GallerySection {
    id: section

    property bool isAnimated: false
    readonly property var batteries: [
        {state: "charging", percentage: 15, charging: true, limited: true},
        {state: "low", percentage: 15, charging: false, limited: true},
        {state: "limit reached", percentage: 80, charging: false, limited: true},
        {state: "normal", percentage: 60, charging: false, limited: false},
        {state: "empty", percentage: 0, charging: false, limited: false},
        {state: "full", percentage: 100, charging: false, limited: false},
    ]

    title: "Battery"

    Repeater {
        model: section.batteries
        delegate: GalleryCell {
            id: ringCell

            required property var modelData

            name: "BatteryRing, " + modelData.state
            width: 148

            BatteryRing {
                width: 72
                height: 72
                percentage: ringCell.modelData.percentage
                isCharging: ringCell.modelData.charging
                isLimitReached: ringCell.modelData.limited
                pulseAlpha: 0.4
            }
        }
    }
    Repeater {
        model: section.batteries
        delegate: GalleryCell {
            id: visualizerCell

            required property var modelData

            name: "BatteryVisualizer, " + modelData.state
            width: 148

            BatteryVisualizer {
                percentage: visualizerCell.modelData.percentage
                isCharging: visualizerCell.modelData.charging
                isLimitReached: visualizerCell.modelData.limited
            }
        }
    }
    GalleryCell {
        name: "BatteryVisualizer, 1.2 times as large"

        BatteryVisualizer {
            magnification: 1.2
            percentage: 60
            isCharging: false
            isLimitReached: false
        }
    }
    GalleryCell {
        name: "HSLogo"

        HSLogo {
            size: 96
            isAnimating: section.isAnimated
        }
    }
}
