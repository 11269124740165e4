// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Templates as T
import Velmora

/// A line of a menu: a command, or one of several choices; a tick stands before the choice that is in force.
T.MenuItem {
    id: item

    property bool isChoice: false
    property bool ticked: false

    implicitWidth: 180
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 5
    leftPadding: 30
    font: Theme.typography.bodyFont
    hoverEnabled: true
    Accessible.name: text
    Accessible.checkable: isChoice
    Accessible.checked: ticked
    Accessible.onPressAction: {
        triggered();
        menu.dismiss();
    }

    background: Rectangle {
        radius: 6
        color: item.highlighted ? Theme.colors.accent : "transparent"

        SymbolImage {
            visible: item.ticked
            name: "checkmark.circle.fill"
            size: 14
            x: 9
            anchors.verticalCenter: parent.verticalCenter
            color: item.highlighted ? "white" : Theme.colors.accent
        }
    }
    contentItem: Label {
        text: item.text
        font: item.font
        color: item.highlighted ? "white" : Theme.colors.primary
        spoken: false
    }
}
