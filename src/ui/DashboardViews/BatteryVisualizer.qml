// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The ring on its track around a bolt. `magnification` gives the real size: a scaled picture would be ragged.
Item {
    id: visualizer

    required property real percentage
    required property bool isCharging
    required property bool isLimitReached
    property real magnification: 1

    /// The ring's opacity while charging.
    property real pulseAlpha: 1
    property real shownPercentage: percentage

    readonly property color boltColor: {
        if (isCharging)
            return Theme.colors.batteryGreen;
        if (percentage < 20)
            return Theme.colors.batteryDanger;
        return isLimitReached ? Theme.colors.accent : Theme.colors.primary;
    }

    implicitWidth: 72 * magnification
    implicitHeight: implicitWidth
    onIsChargingChanged: pulseAlpha = isCharging ? 0.4 : 1
    Component.onCompleted: if (isCharging)
        pulseAlpha = 0.4
    Accessible.role: Accessible.StaticText
    Accessible.name: Texts.percentage(percentage)

    Behavior on pulseAlpha {
        Spring {
            epsilon: 0.002
        }
    }
    Behavior on shownPercentage {
        Spring {
            epsilon: 0.05
        }
    }

    Arc {
        anchors.fill: parent
        value: 1
        from: Theme.faded(Theme.colors.primary, 0.06)
        lineWidth: ring.lineWidth
    }
    BatteryRing {
        id: ring

        objectName: "ring"
        anchors.fill: parent
        percentage: visualizer.percentage // decides the ink, which does not swing with the arc
        value: visualizer.shownPercentage / 100
        isCharging: visualizer.isCharging
        isLimitReached: visualizer.isLimitReached
        pulseAlpha: visualizer.pulseAlpha
        lineWidth: 5 * visualizer.magnification
    }
    SymbolImage {
        anchors.centerIn: parent
        name: "bolt.fill"
        size: Math.round(28 * visualizer.magnification)
        color: visualizer.boltColor
    }

    /// Response 0.4 s, damping fraction 0.6, on an animation that steps every 16 ms.
    component Spring: SpringAnimation {
        spring: 3.39
        damping: 0.26
        mass: 1
    }
}
