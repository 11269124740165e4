// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The chosen machine: what is in force there, and the command that it can be sent.
SettingsGroup {
    id: group

    required property string identifier
    readonly property var device: {
        EcosystemSync.listings; // evaluated so that the next value follows it
        return EcosystemSync.device(identifier);
    }
    readonly property bool takesCommands: !!device.name && !device.isThisMachine && !device.obstacle
    property real commandDate: 0 ///< of the last command that was listed
    property bool isTouched: false ///< a person has changed what stands here, and it is not stored yet
    property real limit: 100
    property bool isAutoProtectOn: false
    property bool isStorageModeOn: false

    visible: !!device.name
    onIdentifierChanged: forget()
    onDeviceChanged: fill()
    Component.onCompleted: fill()

    function forget(): void {
        isTouched = false;
        sending.stop();
        lost.visible = false;
    }

    /// Shows what the next command begins with, unless a person has changed that.
    function fill(): void {
        if (!device.name)
            return;
        if (commandDate !== device.commandDate)
            forget();
        commandDate = device.commandDate;
        if (isTouched)
            return;
        limit = device.limit;
        isAutoProtectOn = device.isAutoProtectOn;
        isStorageModeOn = device.isStorageModeOn;
    }

    function touch(change: var): void {
        isTouched = true;
        lost.visible = false;
        change();
    }

    function send(): void {
        lost.visible = false;
        sending.restart();
        EcosystemSync.command(identifier, limit, isAutoProtectOn, isStorageModeOn);
    }

    Timer {
        id: sending ///< runs until the command is listed

        interval: 20000
        onTriggered: lost.visible = true
    }

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2

        Label {
            objectName: "deviceName"
            Layout.fillWidth: true
            text: group.device.name ?? ""
            font: Theme.typography.headlineFont
            Accessible.role: Accessible.Heading
        }
        Label {
            objectName: "inForce"
            Layout.fillWidth: true
            visible: text
            text: group.device.inForce ? qsTr("In force: %1.").arg(group.device.inForce) : ""
            font: Theme.font(11, Font.Normal)
            color: Theme.colors.secondary
            wrapMode: Text.Wrap
        }
        Label {
            objectName: "obstacle"
            Layout.fillWidth: true
            visible: text
            text: group.device.isThisMachine ? qsTr("This is the machine before you: its limit is set on the page Thresholds.") : group.device.obstacle ?? ""
            font: Theme.font(11, Font.Normal)
            color: Theme.colors.secondary
            wrapMode: Text.Wrap
        }
    }
    PercentSlider {
        objectName: "remoteLimit"
        Layout.fillWidth: true
        visible: !group.device.isThisMachine
        enabled: group.takesCommands
        title: qsTr("Charge limit there")
        current: group.limit
        caption: group.takesCommands ? group.device.lowLimitText : ""
        from: group.device.lowestLimit ?? 50
        to: 100
        onChosen: value => group.touch(() => group.limit = value > from ? Math.max(50, value) : from)
    }
    ToggleRow {
        objectName: "remoteAutoProtect"
        Layout.fillWidth: true
        visible: !group.device.isThisMachine
        enabled: group.takesCommands
        title: qsTr("Auto-Protect there")
        isOn: group.isAutoProtectOn
        onFlipped: on => group.touch(() => group.isAutoProtectOn = on)
    }
    ToggleRow {
        objectName: "remoteStorage"
        Layout.fillWidth: true
        visible: !group.device.isThisMachine
        enabled: group.takesCommands
        title: qsTr("Storage mode there")
        isOn: group.isStorageModeOn
        onFlipped: on => group.touch(() => group.isStorageModeOn = on)
    }
    RowLayout {
        Layout.fillWidth: true
        visible: !group.device.isThisMachine
        spacing: 10

        SmallButton {
            objectName: "send"
            enabled: group.takesCommands
            text: qsTr("Send to that machine")
            onClicked: group.send()
        }
        Label {
            objectName: "commandText"
            Layout.fillWidth: true
            text: {
                if (sending.running)
                    return qsTr("Sending …");
                return group.isTouched ? qsTr("Not sent yet.") : group.device.commandText ?? "";
            }
            font: Theme.font(11, Font.Normal)
            color: Theme.colors.secondary
            wrapMode: Text.Wrap
        }
        SmallButton {
            objectName: "remove"
            visible: group.device.isRemovable ?? false
            text: qsTr("Remove from the list")
            onClicked: EcosystemSync.remove(group.identifier)
        }
    }
    Label {
        id: lost

        objectName: "lost"
        Layout.fillWidth: true
        visible: false
        text: qsTr("It could not be stored. Send it again once the records can be reached.")
        font: Theme.font(11, Font.Normal)
        wrapMode: Text.Wrap
        Accessible.role: Accessible.AlertMessage
    }
}
