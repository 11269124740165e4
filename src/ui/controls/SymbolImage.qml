// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A symbol by name, in one colour or fading from it to `endColor`. Decoration, which screen readers ignore.
Image {
    required property string name
    property real size: 16
    property color color: Theme.colors.primary
    property color endColor: color

    source: name ? Symbols.url(name, color, endColor) : ""
    sourceSize.width: size
    sourceSize.height: size
    width: size
    height: size
    Accessible.ignored: true
}
