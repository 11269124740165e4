// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A switch that looks like one.
Toggle {
    id: toggle

    mark: Rectangle {
        objectName: "mark"
        width: 28
        height: 16
        radius: height / 2
        color: toggle.isOn ? Theme.colors.accent : Theme.faded(Theme.colors.secondary, toggle.hovered ? 0.5 : 0.35)

        Behavior on color {
            ColorAnimation {
                duration: 150
            }
        }

        Rectangle {
            x: toggle.isOn ? parent.width - width - y : y
            y: 2
            width: 12
            height: 12
            radius: 6
            color: "white"

            Behavior on x {
                NumberAnimation {
                    duration: 150
                    easing.type: Easing.OutCubic
                }
            }
        }
    }
}
