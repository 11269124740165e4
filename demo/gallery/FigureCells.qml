// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// What says something and cannot be pressed.
GallerySection {
    id: section

    readonly property var advice: [
        {severity: "optimal", title: "Well kept", message: "It ages more slowly than most."},
        {severity: "warning", title: "Often full", message: "A limit of 80% would slow down its ageing."},
        {severity: "critical", title: "Worn", message: "It holds less than 80% of what it held when it was new."},
    ]

    title: "Figures"

    GalleryCell {
        name: "DashboardPod"
        height: 148

        DashboardPod {
            width: 240
            title: "Battery Health"
            value: "94%"
            detail: "Optimal Condition"
            icon: "heart.fill"
            tint: Theme.colors.accent
        }
    }
    GalleryCell {
        name: "MetricColumn"
        height: 148

        MetricColumn {
            title: "Fitted line"
            value: "-1.4% / mo"
            color: Theme.colors.accent
        }
    }
    GalleryCell {
        name: "Tile"
        height: 148

        Tile {
            width: 140
            label: "Thermal"
            symbol: "thermometer"
            value: "Optimal"
            valueColor: Theme.colors.batteryGreen
        }
    }
    Repeater {
        model: section.advice
        delegate: GalleryCell {
            id: adviceCell

            required property var modelData

            name: "InsightCard, " + modelData.severity

            InsightCard {
                width: 280
                title: adviceCell.modelData.title
                message: adviceCell.modelData.message
                severity: adviceCell.modelData.severity
            }
        }
    }
    GalleryCell {
        name: "DeviceRow"

        DeviceRow {
            width: 280
            name: "Attic"
            status: "On battery, 2h 5m remaining"
            icon: "bolt.ring.closed"
            battery: "81%"
        }
    }
}
