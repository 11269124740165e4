// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Templates as T
import Velmora

/// A menu inside its window. `title` is its accessible name.
T.Menu {
    id: menu

    property int first: 0 ///< its first line that can be chosen
    property bool byKeyboard: false

    /// Opens for the keyboard: focus goes to that line, and later back to where it was.
    function openAt(line: int): void {
        byKeyboard = true;
        open();
        go(line);
    }

    function go(line: int): void {
        currentIndex = line;
        itemAt(line).forceActiveFocus(Qt.TabFocusReason);
    }

    padding: 5
    margins: 6
    implicitHeight: contentHeight + topPadding + bottomPadding
    font: Theme.typography.bodyFont
    modal: true
    dim: false
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside

    Component.onCompleted: contentItem.parent.Accessible.name = title
    onClosed: {
        parent.forceActiveFocus(byKeyboard ? Qt.TabFocusReason : Qt.PopupFocusReason);
        byKeyboard = false;
    }

    background: ContinuousRectangle {
        x: -inset
        y: -inset
        width: menu.width + 2 * inset
        height: menu.height + 2 * inset
        inset: 16
        radius: 9
        color: Theme.colors.menuBackground
        edgeColor: Theme.colors.edge
        edgeWidth: 1
        shadowColor: Theme.grey(0, Theme.dark ? 0.5 : 0.22)
        shadowOffset: 4
        shadowRadius: 16
    }
    contentItem: ListView {
        implicitHeight: contentHeight
        model: menu.contentModel
        currentIndex: menu.currentIndex
        interactive: false
        Keys.onPressed: event => {
            event.accepted = event.key === Qt.Key_Home || event.key === Qt.Key_End;
            if (event.accepted)
                menu.go(event.key === Qt.Key_Home ? menu.first : menu.count - 1);
        }
    }
}
