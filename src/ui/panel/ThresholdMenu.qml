// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Templates as T
import Velmora

/// The charge limits to choose from, and the way to all other settings.
PlainMenu {
    id: menu

    required property RemoteModel battery
    property alias limits: choices.model

    signal chosen(real limit)
    signal settingsWanted

    /// For the keyboard, which begins at the choice in force.
    function openAtTick(): void {
        openAt(first + Math.max(0, limits.findIndex(one => one.limit === battery.customChargeLimit)));
    }

    title: qsTr("Settings")
    first: 1 // below the header
    implicitWidth: Math.min(300, Math.round(208 * Math.max(1, Theme.fontScale)))

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

        delegate: PlainMenuItem {
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
    PlainMenuItem {
        text: qsTr("Dashboard Settings...")
        onTriggered: menu.settingsWanted()
    }
}
