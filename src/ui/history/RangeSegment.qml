// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// One of the words of a RangePicker.
ChoiceButton {
    id: segment

    required property string modelData
    property string current
    readonly property bool selected: modelData === current

    signal stepped(int by)

    objectName: "range" + modelData
    text: modelData
    padding: 5
    leftPadding: 12
    rightPadding: 12
    ringRadius: 6
    font: Theme.font(11, selected ? Font.DemiBold : Font.Normal)
    checked: selected
    Keys.onLeftPressed: stepped(-1)
    Keys.onRightPressed: stepped(1)

    background: Rectangle {
        radius: segment.ringRadius
        color: {
            if (segment.selected)
                return Theme.dark ? Theme.grey(1, 0.18) : "white";
            return segment.hovered ? Theme.colors.hover : "transparent";
        }
        border.width: segment.selected ? 1 : 0
        border.color: Theme.colors.edge
    }
    contentItem: Label {
        text: segment.text
        font: segment.font
        color: segment.selected ? Theme.colors.primary : Theme.colors.secondary
        spoken: false
    }
}
