// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Templates as T
import Velmora

/// The charge limits to choose from, and the way to all other settings.
T.Menu {
    id: menu

    required property RemoteModel battery
    property alias limits: choices.model
    readonly property int first: 1 ///< below the header

    property bool byKeyboard: false

    signal chosen(real limit)
    signal settingsWanted

    /// For the keyboard, which begins at the choice in force and needs a place to come back to.
    function openAtTick(): void {
        byKeyboard = true;
        open();
        go(first + Math.max(0, limits.findIndex(one => one.limit === battery.customChargeLimit)));
    }

    function go(line: int): void {
        currentIndex = line;
        itemAt(line).forceActiveFocus(Qt.TabFocusReason);
    }

    title: qsTr("Settings")
    padding: 5
    margins: 6
    implicitWidth: Math.min(300, Math.round(208 * Math.max(1, Theme.fontScale)))
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

    Label {
        text: qsTr("Charge Threshold")
        font: Theme.font(11, Font.DemiBold)
        color: Theme.colors.secondary
        leftPadding: 10
        topPadding: 5
        bottomPadding: 3
    }
    Instantiator {
        id: choices

        delegate: ThresholdMenuItem {
            required property var modelData

            text: modelData.text
            isChoice: true
            ticked: (menu as ThresholdMenu).battery.customChargeLimit === modelData.limit
            onTriggered: menu.chosen(modelData.limit)
        }
        onObjectAdded: (index, item) => menu.insertItem(menu.first + index, item)
        onObjectRemoved: (index, item) => menu.removeItem(item)
    }
    T.MenuSeparator {
        topPadding: 5
        bottomPadding: 5
        implicitWidth: 100
        implicitHeight: 11
        contentItem: Rectangle {
            color: Theme.colors.edge
            implicitHeight: 1
        }
    }
    ThresholdMenuItem {
        text: qsTr("Dashboard Settings...")
        onTriggered: menu.settingsWanted()
    }
}
