// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Templates as T
import Velmora

/// One of several, of which one is chosen; otherwise a PressButton. A type of its own, since to a screen reader
/// Qt 6.4 calls a control what its type is, whatever `Accessible.role` says.
T.RadioButton {
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
