// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Templates as T
import Velmora

/// The base of all buttons, which add the looks. Space and Enter press it.
T.Button {
    id: button

    property real ringRadius: 8

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    font: Theme.typography.bodyFont
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Accessible.name: text
    Accessible.onPressAction: clicked()
    Accessible.onToggleAction: clicked()

    FocusRing {
        visible: button.visualFocus
        radius: button.ringRadius + gap
    }
}
