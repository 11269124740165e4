// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// This machine's part in the fleet, and the way out of it.
SettingsGroup {
    id: group

    property bool isLeaving: false ///< asked for once

    Label {
        objectName: "thisMachine"
        Layout.fillWidth: true
        text: EcosystemSync.deviceID ? Texts.filled(qsTr("This machine is %1 (%2)."), [EcosystemSync.deviceName, EcosystemSync.deviceID]) : qsTr("This machine's identifier is being looked for: the secret store may be locked.")
        wrapMode: Text.Wrap
    }
    ToggleRow {
        objectName: "acceptsCommands"
        Layout.fillWidth: true
        title: qsTr("Accept commands")
        subtitle: qsTr("Your other machines may set limit, Auto-Protect and storage mode here.")
        isOn: EcosystemSync.acceptsCommands
        onFlipped: on => EcosystemSync.set("acceptsCommands", on)
    }
    SeparatorLine {
        Layout.fillWidth: true
    }
    RowLayout {
        Layout.fillWidth: true
        spacing: 8

        Label {
            objectName: "leaveText"
            Layout.fillWidth: true
            text: group.isLeaving ? qsTr("Remove this machine's record and turn Ecosystem Sync off?") : qsTr("Leaving removes this machine's record. Its own limit stays as it is.")
            font: Theme.font(11, Font.Normal)
            color: Theme.colors.secondary
            wrapMode: Text.Wrap
        }
        SmallButton {
            objectName: "stay"
            visible: group.isLeaving
            text: qsTr("Stay")
            onClicked: {
                group.isLeaving = false;
                leave.forceActiveFocus(Qt.TabFocusReason);
            }
        }
        SmallButton {
            id: leave

            objectName: "leave"
            text: group.isLeaving ? qsTr("Leave now") : qsTr("Leave …")
            onClicked: {
                if (group.isLeaving)
                    EcosystemSync.leave();
                group.isLeaving = !group.isLeaving;
            }
        }
    }
}
