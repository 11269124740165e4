// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// What things stand on, and what separates them.
GallerySection {
    title: "Grounds"

    GalleryCell {
        name: "PodBackground"

        PodBackground {
            width: 240
            height: 80
        }
    }
    GalleryCell {
        name: "GlassyBackground"

        Item {
            width: 240
            height: 72

            Rectangle { // to shine through
                x: 16
                y: 16
                width: 72
                height: 40
                color: Theme.colors.accent
            }
            GlassyBackground {
            }
        }
    }
    GalleryCell {
        name: "Pill"

        Pill {
            text: "Healthy"
            font: Theme.font(10, Font.Bold)
            textColor: Theme.colors.batteryGreen
            color: Theme.faded(Theme.colors.batteryGreen, 0.15)
        }
    }
    GalleryCell {
        name: "SeparatorLine"

        SeparatorLine {
            width: 240
        }
    }
    GalleryCell {
        name: "FocusRing"

        Item {
            width: 120
            height: 32

            FocusRing {
            }
        }
    }
}
