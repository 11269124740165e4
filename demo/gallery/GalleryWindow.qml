// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// All that the windows are made of, in the appearance that the engine has. A new component is one more
/// GalleryCell in its section; what differs in its inputs alone is a line of a list.
Window {
    id: window

    required property var symbols ///< names
    property bool isAnimated: false
    readonly property real contentHeight: scroll.contentHeight

    title: Theme.dark ? "Velmora Gallery (dark)" : "Velmora Gallery (light)"
    width: 976
    height: 800
    color: Theme.colors.controlBackground

    ScrollColumn {
        id: scroll

        anchors.fill: parent
        padding: 24
        spacing: 24

        BatteryCells {
            isAnimated: window.isAnimated
        }
        GroundCells {
        }
        FigureCells {
        }
        ControlCells {
        }
        ThemeCells {
        }
        SymbolCells {
            symbols: window.symbols
        }
    }
}
