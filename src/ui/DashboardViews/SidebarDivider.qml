// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The line between two columns, which can be moved by pointer and by arrow keys.
Item {
    id: divider

    required property real lowest
    required property real highest
    required property real position

    function move(to: real): void {
        position = Math.max(lowest, Math.min(highest, Math.round(to)));
    }

    x: position - width / 2
    width: 9
    activeFocusOnTab: true
    Keys.onLeftPressed: move(position - 10)
    Keys.onRightPressed: move(position + 10)
    Accessible.role: Accessible.Splitter
    Accessible.name: qsTr("Width of the sidebar")
    Accessible.focusable: true
    Accessible.onIncreaseAction: move(position + 10)
    Accessible.onDecreaseAction: move(position - 10)

    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        width: divider.activeFocus ? 3 : 1
        height: parent.height
        color: divider.activeFocus ? Theme.colors.focusRing : Theme.colors.edge
    }
    MouseArea {
        property real dragOffset

        anchors.fill: parent
        cursorShape: Qt.SplitHCursor
        preventStealing: true
        onPressed: mouse => dragOffset = mouse.x - width / 2
        onPositionChanged: mouse => divider.move(mapToItem(divider.parent, mouse.x, 0).x - dragOffset)
        onDoubleClicked: divider.move(300)
    }
}
