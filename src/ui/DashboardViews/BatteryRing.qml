// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// How full the battery is, as a part of a circle that begins at the top.
Arc {
    required property real percentage
    required property bool isCharging
    required property bool isLimitReached
    required property real pulseAlpha

    function ink(): TwoStops {
        if (isCharging)
            return Theme.gradients.healthy;
        if (percentage < 20)
            return Theme.gradients.lowPower;
        return isLimitReached ? Theme.gradients.active : Theme.gradients.primary;
    }

    value: percentage / 100
    from: ink().from
    to: ink().to
    lineWidth: 5
    opacity: isCharging ? pulseAlpha : 1
}
