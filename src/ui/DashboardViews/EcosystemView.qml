// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The user's machines, as the last synchronisation found them.
DashboardPage {
    id: page

    title: qsTr("Ecosystem Sync")
    subtitle: battery.lastSync ? qsTr("Last synchronised %1").arg(battery.lastSync) : qsTr("Never synchronised")

    PodBackground {
        objectName: "fleet"
        Layout.fillWidth: true
        visible: page.battery.fleet.length > 0
        implicitHeight: list.implicitHeight + 16

        ColumnLayout {
            id: list

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.margins: 8
            anchors.verticalCenter: parent.verticalCenter
            spacing: 2

            Repeater {
                model: page.battery.fleet
                delegate: DeviceChoice {
                }
                onItemAdded: (index, item) => {
                    const choice = item as DeviceChoice;
                    choice.selected = Qt.binding(() => page.battery.selectedDeviceID === choice.identifier);
                    choice.clicked.connect(() => page.battery.selectDevice(choice.selected ? "" : choice.identifier));
                }
            }
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        visible: page.battery.fleet.length === 0
        spacing: 8

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true
        }
        SymbolImage {
            Layout.alignment: Qt.AlignHCenter
            name: "iphone.radiowaves.left.and.right"
            size: 40
            color: Theme.faded(Theme.colors.secondary, 0.5)
        }
        Label {
            objectName: "empty"
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: 420
            Layout.maximumWidth: page.width - 2 * page.padding
            text: qsTr("No machines yet. Each of your machines that shares its battery's state appears "
                       + "here after the next synchronisation.")
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            color: Theme.colors.secondary
        }
        Item {
            Layout.fillHeight: true
        }
    }
    Item {
        Layout.fillHeight: true
        visible: page.battery.fleet.length > 0
    }
}
