// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The ring of a desktop widget. A layout would round its size.
Item {
    id: ring

    required property RemoteModel battery
    property alias magnification: visualizer.magnification

    implicitWidth: visualizer.implicitWidth
    implicitHeight: visualizer.implicitHeight

    BatteryVisualizer {
        id: visualizer

        percentage: ring.battery.isWatched ? ring.battery.percentage : 0
        isCharging: ring.battery.isWatched && ring.battery.chargingState === "Charging"
        isLimitReached: ring.battery.isLimitReached
        opacity: ring.battery.isWatched ? 1 : 0.3
        Accessible.ignored: true // the widget says it
    }
}
