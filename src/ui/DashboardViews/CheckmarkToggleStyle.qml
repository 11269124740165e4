// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A switch with a tick: a circle that fills when it is on.
Toggle {
    id: toggle

    mark: SymbolImage {
        objectName: "mark"
        size: Math.round(15 * 1.35 * Theme.fontScale)
        name: toggle.isOn ? "checkmark.circle.fill" : "circle"
        color: toggle.isOn ? Theme.colors.accent : Theme.faded(Theme.colors.secondary, toggle.hovered ? 0.6 : 0.3)
    }
}
