// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A line of text, cut short with an ellipsis where there is no room.
Text {
    property bool spoken: true ///< false where its control has the accessible name

    font: Theme.typography.bodyFont
    color: Theme.colors.primary
    elide: Text.ElideRight
    minimumPixelSize: 8 // of labels that set a fontSizeMode
    textFormat: Text.PlainText
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: !spoken
}
