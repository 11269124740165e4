// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A plot of the history with a marker on the sample under the pointer, or on the one that the arrow keys
/// have come to, and what was measured there.
PodBackground {
    id: pod

    required property Trends trends
    property bool thermal: false
    property string name

    implicitHeight: 180
    // Like the other pods, but opaque, since it is also exported as a picture.
    color: Qt.tint(Theme.colors.controlBackground, Theme.grey(Theme.dark ? 1 : 0, Theme.dark ? 0.05 : 0.03))

    TrendPlot {
        id: plot

        objectName: "plot"
        anchors.fill: parent
        anchors.margins: 14
        anchors.topMargin: words.y + words.implicitHeight + 6
        visible: !pod.trends.empty
        trends: pod.trends
        thermal: pod.thermal
        activeFocusOnTab: true
        ink: pod.thermal ? Theme.colors.primary : Theme.colors.batteryGreen
        fitInk: Theme.colors.accent
        wornInk: Theme.colors.batteryDanger
        gridInk: Theme.faded(Theme.colors.primary, 0.1)
        textInk: Theme.colors.secondary
        bandInks: [
            Theme.faded(Theme.colors.blue, 0.16),
            Theme.faded(Theme.colors.green, 0.5),
            Theme.faded(Theme.colors.batteryWarning, 0.6),
            Theme.faded(Theme.colors.batteryDanger, 0.6)
        ]
        font: Theme.font(10, Font.Normal)
        Accessible.role: Accessible.Chart
        Accessible.name: pod.name
        Accessible.description: readOut || pod.trends.summary
        Accessible.focusable: true

        Rectangle {
            visible: plot.hasCursor
            x: Math.round(plot.cursor.x)
            y: plot.field.y
            width: 1
            height: plot.field.height
            color: Theme.faded(Theme.colors.primary, 0.3)
        }
        Rectangle {
            visible: plot.hasCursor
            x: plot.cursor.x - width / 2
            y: plot.cursor.y - height / 2
            width: 11
            height: 11
            radius: 5.5
            color: plot.ink
            border.width: 2
            border.color: Theme.colors.controlBackground
        }
        FocusRing {
            visible: plot.activeFocus
            gap: 8
        }
    }
    Label {
        id: words

        objectName: "readOut"
        x: 14
        y: 10
        width: parent.width - 28
        visible: !pod.trends.empty
        text: plot.readOut || pod.trends.summary
        font: Theme.font(11, Font.Normal)
        color: plot.hasCursor ? Theme.colors.primary : Theme.colors.secondary
        spoken: false
    }
    Label {
        objectName: "empty"
        anchors.centerIn: parent
        width: Math.min(420, parent.width - 48)
        visible: pod.trends.empty
        text: pod.trends.emptyText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        color: Theme.colors.secondary
    }

    /// Saves the plot to a new file; `done` is called with the message for the user.
    function savePicture(done: var): void {
        const file = pod.trends.pictureFile(pod.name);
        pod.grabToImage(result => {
            const isSaved = result.saveToFile(file);
            done((isSaved ? qsTr("Saved as %1") : qsTr("Cannot write %1")).arg(file));
        });
    }
}
