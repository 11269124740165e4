// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// How warm the laptop has been, and how full its battery was meanwhile.
DashboardPage {
    id: page

    title: qsTr("Thermal History")
    subtitle: qsTr("Thermal states behind the level of the battery")
    accessories: RangePicker {
        choices: trends.ranges
        current: trends.range
        onChosen: choice => trends.range = choice
    }

    Trends {
        id: trends

        objectName: "trends"
        battery: page.battery
        range: "Week"
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: 12

        Repeater {
            model: trends.shares
            delegate: Tile {
                required property var modelData

                objectName: "share" + modelData.name
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                label: modelData.name
                symbol: "thermometer"
                value: modelData.share
                valueColor: Theme.color(modelData.color)
            }
        }
    }
    HistoryPlot {
        id: plot

        objectName: "thermalPlot"
        Layout.fillWidth: true
        Layout.fillHeight: true
        trends: trends
        thermal: true
        name: qsTr("Thermal history")
    }
    Label {
        Layout.fillWidth: true
        text: qsTr("Shares are of the recorded time: a sample counts until the next one, an hour at most.")
        font: Theme.font(11, Font.Normal)
        color: Theme.colors.secondary
        wrapMode: Text.Wrap
    }
    ExportRow {
        Layout.fillWidth: true
        trends: trends
        plot: plot
    }
}
