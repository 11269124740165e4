// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The fleet of the user's machines: its beginning, its machines and what they can be told, where its records
/// live, and this machine's part in it. Below it the user's account.
DashboardPage {
    id: page

    readonly property bool isSeen: Window.window && Window.window.visible && Window.window.visibility !== Window.Minimized

    title: qsTr("Ecosystem Sync")
    subtitle: {
        if (!EcosystemSync.isOn)
            return qsTr("Off");
        return EcosystemSync.lastSync ? qsTr("Last synchronised %1").arg(EcosystemSync.lastSync) : qsTr("Not synchronised yet");
    }

    Timer { // a command's effect is seen soon, and nothing is asked for that nobody looks at
        interval: 4000
        repeat: true
        running: EcosystemSync.isOn && page.isSeen
        triggeredOnStart: true
        onTriggered: EcosystemSync.refresh()
    }

    ColumnLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        visible: !EcosystemSync.isOn
        spacing: 14

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
        Column { // a layout would not follow the height of the wrapped text
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: Math.min(460, page.width - 2 * page.padding)
            spacing: 10

            Explanation {
                objectName: "purpose"
                text: qsTr("See the batteries of all your machines in one place, and set their charge limits from here. "
                           + "The records stay with you: on this computer, or on a server of your choice.")
            }
            Explanation {
                text: qsTr("Once a minute each machine saves its name, its battery's level, whether it charges, how "
                           + "warm it is, and the limit and modes in force. %1").arg(EcosystemSync.placeText)
                color: Theme.colors.secondary
            }
        }
        Label {
            objectName: "left"
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: Math.min(460, page.width - 2 * page.padding)
            visible: text
            text: EcosystemSync.isLeaving ? qsTr("This machine's record is being removed …") : EcosystemSync.leftText
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Accessible.role: Accessible.AlertMessage
        }
        ProminentButton {
            objectName: "begin"
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: Math.max(160, implicitWidth)
            symbol: "arrow.triangle.2.circlepath"
            text: qsTr("Begin")
            onClicked: EcosystemSync.turnOn()
        }
        Item {
            Layout.fillHeight: true
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        visible: EcosystemSync.isOn
        spacing: 16

        Label {
            objectName: "problem"
            Layout.fillWidth: true
            visible: text
            text: EcosystemSync.problemText
            wrapMode: Text.Wrap
            Accessible.role: Accessible.AlertMessage
        }
        DeviceList {
            id: devices

            objectName: "fleet"
            Layout.fillWidth: true
            visible: !isEmpty
            selected: page.battery.selectedDeviceID
            onChosen: identifier => page.battery.selectDevice(identifier)
        }
        Label {
            objectName: "listEnd"
            Layout.fillWidth: true
            visible: text
            text: EcosystemSync.listEndText
            color: Theme.colors.secondary
            wrapMode: Text.Wrap
        }
        Label {
            objectName: "empty"
            Layout.fillWidth: true
            visible: devices.isEmpty && !EcosystemSync.problemText
            text: qsTr("No machine is listed yet. This one appears in a moment, others once they take part at the same place.")
            color: Theme.colors.secondary
            wrapMode: Text.Wrap
        }
        DeviceGroup {
            objectName: "device"
            Layout.fillWidth: true
            identifier: page.battery.selectedDeviceID
        }
        GroupTitle {
            text: qsTr("This Machine")
        }
        ThisMachineGroup {
            Layout.fillWidth: true
        }
        GroupTitle {
            text: qsTr("Where the Records Live")
        }
        RecordPlaceGroup {
            objectName: "place"
            Layout.fillWidth: true
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 16

        GroupTitle {
            text: qsTr("Account")
        }
        AccountGroup {
            id: account

            objectName: "account"
            Layout.fillWidth: true
            onHeightChanged: reveal.start()

            Timer {
                id: reveal

                interval: 0 // once all have their places
                onTriggered: {
                    if (!account.isFormShown)
                        return;
                    page.reveal(account); // the form, which was below what was in view
                    page.reveal(page.Window.activeFocusItem);
                }
            }
        }
    }
    Item {
        Layout.fillHeight: true
        visible: EcosystemSync.isOn
    }

    component Explanation: Label {
        width: parent?.width ?? 0
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
    }
    component GroupTitle: Label {
        font: Theme.typography.headlineFont
        Accessible.role: Accessible.Heading
    }
}
