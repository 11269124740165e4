// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The fleet's machines, of which one may be chosen. However many there are, only those in sight cost anything.
PodBackground {
    id: fleet

    required property string selected ///< identifier; empty: none

    readonly property bool isEmpty: list.count === 0

    signal chosen(string identifier)

    implicitHeight: list.height + 16

    ListView {
        id: list

        readonly property real mostRows: 4.5 // the half one says that there is more

        objectName: "devices"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 8
        height: Math.min(contentHeight, mostRows * Math.max(48, contentHeight / Math.max(1, count)))
        clip: contentHeight > height
        spacing: 2
        boundsBehavior: Flickable.StopAtBounds
        model: EcosystemSync.devices
        activeFocusOnTab: true
        keyNavigationEnabled: true
        interactive: contentHeight > height
        cacheBuffer: 200
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Your machines")
        Keys.onPressed: event => {
            event.accepted = event.key === Qt.Key_Home || event.key === Qt.Key_End;
            if (event.accepted)
                currentIndex = event.key === Qt.Key_Home ? 0 : count - 1;
        }
        // Components that are bound to their surroundings come with Qt 6.5.
        // qmllint disable unqualified
        delegate: DeviceChoice {
            id: choice

            required property int index

            width: list.width
            selected: fleet.selected === identifier
            onClicked: {
                list.currentIndex = index;
                fleet.chosen(identifier);
            }

            FocusRing {
                visible: choice.activeFocus && !choice.visualFocus
                gap: -1
            }
        }
        // qmllint enable unqualified

        Rectangle {
            parent: fleet
            visible: list.interactive
            x: fleet.width - width - 3
            y: list.y + list.visibleArea.yPosition * list.height
            width: 4
            height: list.visibleArea.heightRatio * list.height
            radius: 2
            color: Theme.faded(Theme.colors.primary, 0.25)
        }
    }
}
