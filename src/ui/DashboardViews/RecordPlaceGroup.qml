// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// Where the fleet's records live, and the form for another place.
SettingsGroup {
    id: group

    readonly property var place: EcosystemSync.place
    readonly property string kept: JSON.stringify(place) // a text, to see whether it has changed
    property bool isServer: false
    property bool isCertificateWanted: false
    readonly property var form: ({
            "kind": isServer ? "server" : "this-computer",
            "host": host.text.trim(),
            "port": Number(port.text),
            "database": database.text.trim(),
            "user": user.text.trim(),
            "trust": isCertificateWanted ? "certificate" : "channel-binding",
            "passwordFile": file.text.trim()
        })
    readonly property string inUseText: isInUse ? qsTr("In use.") : ""
    readonly property string missing: EcosystemSync.missingText(form)
    readonly property bool isInUse: {
        for (const key in place)
            if (form[key] !== place[key])
                return false;
        return true;
    }
    // What stands here, since it was last changed:
    property bool isTested: false
    property bool isWanted: false ///< is to be used

    onKeptChanged: fill()
    onFormChanged: forget()
    Component.onCompleted: fill()

    function fill(): void {
        isServer = place.kind === "server";
        isCertificateWanted = place.trust === "certificate";
        host.text = place.host;
        port.text = place.port;
        database.text = place.database;
        user.text = place.user;
        file.text = place.passwordFile;
        password.text = "";
    }

    function forget(): void {
        isTested = false;
        isWanted = false;
    }

    function test(): void {
        EcosystemSync.test(form, password.text);
        isTested = true;
    }

    function use(): void {
        EcosystemSync.use(form, password.text);
        isTested = false;
        isWanted = true;
    }

    Label {
        objectName: "placeText"
        Layout.fillWidth: true
        text: EcosystemSync.placeText
        wrapMode: Text.Wrap
    }
    RowLayout {
        Layout.fillWidth: true
        spacing: 6

        PlaceChoice {
            objectName: "thisComputer"
            text: qsTr("This computer")
            checked: !group.isServer
            onClicked: group.isServer = false
        }
        PlaceChoice {
            objectName: "server"
            text: qsTr("A server, for several machines")
            checked: group.isServer
            onClicked: group.isServer = true
        }
        Item {
            Layout.fillWidth: true
        }
    }
    GridLayout {
        Layout.fillWidth: true
        visible: group.isServer
        columns: 2
        columnSpacing: 12
        rowSpacing: 10

        TextEntry {
            id: host

            objectName: "host"
            Layout.fillWidth: true
            Layout.preferredWidth: 1 // as wide as the one beside it
            title: qsTr("Host")
            hint: qsTr("records.example.org")
        }
        TextEntry {
            id: port

            objectName: "port"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            title: qsTr("Port")
            validator: IntValidator {
                bottom: 1
                top: 65535
            }
        }
        TextEntry {
            id: database

            objectName: "database"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            title: qsTr("Database")
            maximumLength: 63
        }
        TextEntry {
            id: user

            objectName: "user"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            title: qsTr("User")
            maximumLength: 63
        }
        TextEntry {
            id: password

            objectName: "password"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            title: qsTr("Password")
            hint: qsTr("As it is kept")
            isSecret: true
            onTextChanged: group.forget()
        }
        TextEntry {
            id: file

            objectName: "passwordFile"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            title: qsTr("Or a password file")
            hint: qsTr("None")
            maximumLength: 1000
        }
    }
    RowLayout {
        Layout.fillWidth: true
        visible: group.isServer
        spacing: 6

        Label {
            text: qsTr("Trust it by")
            font: Theme.font(11, Font.Medium)
            color: Theme.colors.secondary
        }
        PlaceChoice {
            objectName: "byPassword"
            text: qsTr("the password")
            checked: !group.isCertificateWanted
            onClicked: group.isCertificateWanted = false
        }
        PlaceChoice {
            objectName: "byCertificate"
            text: qsTr("its certificate")
            checked: group.isCertificateWanted
            onClicked: group.isCertificateWanted = true
        }
        Item {
            Layout.fillWidth: true
        }
    }
    Label {
        objectName: "testText"
        Layout.fillWidth: true
        visible: text
        text: {
            if (group.missing)
                return group.missing;
            if (!group.isTested)
                return group.isWanted || group.isInUse ? EcosystemSync.problemText || group.inUseText : "";
            return EcosystemSync.isTesting ? qsTr("Trying …") : EcosystemSync.testText(group.form);
        }
        font: Theme.font(11, Font.Normal)
        color: Theme.colors.secondary
        wrapMode: Text.Wrap
        Accessible.role: Accessible.AlertMessage
    }
    RowLayout {
        Layout.fillWidth: true
        spacing: 8

        SmallButton {
            objectName: "test"
            enabled: !group.missing && !EcosystemSync.isTesting
            text: qsTr("Test")
            onClicked: group.test()
        }
        SmallButton {
            objectName: "use"
            enabled: !group.missing
            text: group.isServer ? qsTr("Use this server") : qsTr("Use this computer")
            onClicked: group.use()
        }
    }

    component PlaceChoice: ChoiceButton {
        id: choice

        leftPadding: 10
        rightPadding: 10
        topPadding: 4
        bottomPadding: 4
        font: Theme.font(11, Font.DemiBold)
        autoExclusive: false
        background: Rectangle {
            radius: choice.ringRadius
            color: Theme.rowColor(choice.checked, choice.down, choice.hovered)
            border.width: 1
            border.color: Theme.colors.edge
        }
        contentItem: Label {
            text: choice.text
            font: choice.font
            spoken: false
        }
    }
}
