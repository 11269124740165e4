// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// How the battery ages, and when it should be replaced.
DashboardPage {
    id: page

    title: qsTr("Health Trends")
    subtitle: qsTr("Full capacity compared with a new battery's")
    accessories: RangePicker {
        choices: trends.ranges
        current: trends.range
        onChosen: choice => trends.range = choice
    }

    Trends {
        id: trends

        objectName: "trends"
        battery: page.battery
    }

    Flow {
        Layout.fillWidth: true
        spacing: 24

        MetricColumn {
            objectName: "health"
            title: qsTr("Health")
            value: trends.health
            color: Theme.colors.primary
        }
        MetricColumn {
            objectName: "rate"
            title: qsTr("First to last")
            value: trends.rate
            color: Theme.color(page.battery.degradationColor)
        }
        MetricColumn {
            objectName: "fitted"
            title: qsTr("Fitted line")
            value: trends.fitted
            color: Theme.colors.accent
        }
        MetricColumn {
            objectName: "cycles"
            visible: value
            title: qsTr("Cycles")
            value: page.battery.cycles
            color: Theme.colors.primary
        }
    }
    HistoryPlot {
        id: plot

        objectName: "healthPlot"
        Layout.fillWidth: true
        Layout.fillHeight: true
        trends: trends
        name: qsTr("Battery health")
    }
    PodBackground {
        objectName: "forecast"
        Layout.fillWidth: true
        implicitHeight: forecast.implicitHeight + 24
        Accessible.role: Accessible.StaticText
        Accessible.name: qsTr("Replacement: %1. %2").arg(trends.forecast).arg(trends.forecastDetail)

        ColumnLayout {
            id: forecast

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.margins: 12
            anchors.verticalCenter: parent.verticalCenter
            spacing: 2

            Label {
                Layout.fillWidth: true
                text: qsTr("Replacement: %1").arg(trends.forecast)
                font: Theme.typography.headlineFont
                spoken: false
            }
            Label {
                Layout.fillWidth: true
                text: trends.forecastDetail
                font: Theme.font(11, Font.Normal)
                color: Theme.colors.secondary
                wrapMode: Text.Wrap
                spoken: false
            }
        }
    }
    Repeater {
        model: trends.insights
        delegate: InsightCard {
            required property var modelData

            Layout.fillWidth: true
            title: modelData.title
            message: modelData.message
            severity: modelData.severity
        }
    }
    ExportRow {
        Layout.fillWidth: true
        trends: trends
        plot: plot
    }
}
