// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// Type, colours and gradients.
GallerySection {
    title: "Theme"

    Repeater {
        model: ["titleFont", "headlineFont", "bodyFont", "captionFont", "statusFont"]
        delegate: GalleryCell {
            id: fontCell

            required property string modelData

            name: modelData
            width: 178

            Label {
                text: "Battery"
                font: Theme.typography[fontCell.modelData]
            }
        }
    }
    Repeater {
        model: [
            "batteryGreen", "batteryWarning", "batteryDanger", "accent", "orange", "blue", "green", "primary",
            "secondary", "separator"
        ]
        delegate: GalleryCell {
            id: colorCell

            required property string modelData

            name: modelData
            width: 84
            height: 84

            Rectangle {
                width: 48
                height: 48
                color: Theme.color(colorCell.modelData)
            }
        }
    }
    Repeater {
        model: ["primary", "healthy", "active", "lowPower"]
        delegate: GalleryCell {
            id: gradientCell

            required property string modelData

            name: "gradient " + modelData
            width: 148

            Arc { // as wide as its radius: a disc
                width: 96
                height: 96
                value: 1
                from: Theme.gradients[gradientCell.modelData].from
                to: Theme.gradients[gradientCell.modelData].to
                lineWidth: 48
            }
        }
    }
}
