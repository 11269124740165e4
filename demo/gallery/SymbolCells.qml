// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// Every symbol, and one that fades.
GallerySection {
    id: section

    required property var symbols ///< names

    title: "Symbols"

    Repeater {
        model: section.symbols
        delegate: GalleryCell {
            id: cell

            required property string modelData

            name: modelData
            width: 178
            height: 76

            SymbolImage {
                name: cell.modelData
                size: 40
            }
        }
    }
    GalleryCell {
        name: "bolt.shield.fill, fading"
        width: 178
        height: 76

        SymbolImage {
            name: "bolt.shield.fill"
            size: 40
            color: Theme.gradients.active.from
            endColor: Theme.gradients.active.to
        }
    }
}
