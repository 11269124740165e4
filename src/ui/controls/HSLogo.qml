// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The product's mark: a bolt on a disc inside an open ring that turns while `isAnimating`.
Item {
    id: logo

    required property real size
    property bool isAnimating: false
    property real pulse: 1

    implicitWidth: size
    implicitHeight: size
    Accessible.role: Accessible.Graphic
    Accessible.name: qsTr("Velmora")
    Component.onCompleted: if (isAnimating) {
        turning.start();
        breathing.start();
    }

    Arc {
        anchors.fill: parent
        value: 0.78
        from: Theme.gradients.primary.from
        to: Theme.gradients.healthy.to
        lineWidth: logo.size * 0.06

        NumberAnimation on start {
            id: turning

            running: false
            from: 0
            to: 360
            duration: 2000
            loops: Animation.Infinite
        }
    }
    Arc {
        // as wide as its radius: a disc
        anchors.centerIn: parent
        width: logo.size * 0.72 * logo.pulse
        height: width
        value: 1
        from: Theme.gradients.primary.from
        to: Theme.gradients.primary.to
        lineWidth: width / 2
    }
    SymbolImage {
        anchors.centerIn: parent
        name: "bolt.fill"
        size: Math.round(logo.size * 0.4)
        color: "white"
    }

    SequentialAnimation {
        id: breathing

        running: false
        loops: Animation.Infinite

        NumberAnimation {
            target: logo
            property: "pulse"
            to: 1.05
            duration: 1000
            easing.type: Easing.InOutQuad
        }
        NumberAnimation {
            target: logo
            property: "pulse"
            to: 1
            duration: 1000
            easing.type: Easing.InOutQuad
        }
    }
}
