// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The form for an identity provider. Emits `done` once it is needed no more.
ColumnLayout {
    id: form

    readonly property var kept: AppleAuthManager.provider
    readonly property string keptText: JSON.stringify(kept) // to see whether it has changed
    readonly property var typed: ({
            "issuer": issuer.text.trim(),
            "clientID": client.text.trim(),
            "parameters": parameters.text.trim()
        })
    readonly property bool isSameClient: typed.issuer === kept.issuer && typed.clientID === kept.clientID
    readonly property bool isInUse: isSameClient && typed.parameters === kept.parameters
    readonly property string flaw: typed.issuer ? AppleAuthManager.flawText(typed) : ""
    property bool isWanted: false ///< what stands here is to be used

    signal done

    spacing: 12
    onKeptTextChanged: {
        const isDone = isWanted;
        fill();
        if (isDone)
            done();
    }
    onTypedChanged: isWanted = false
    onVisibleChanged: {
        if (!visible)
            return;
        fill();
        issuer.focusField();
    }
    Component.onCompleted: fill()

    function fill(): void {
        issuer.text = kept.issuer;
        client.text = kept.clientID;
        parameters.text = kept.parameters;
        secret.text = "";
        isWanted = false;
    }

    function use(): void {
        AppleAuthManager.use(typed, secret.text);
        secret.text = "";
        isWanted = true;
    }

    GridLayout {
        Layout.fillWidth: true
        columns: 2
        columnSpacing: 12
        rowSpacing: 10

        FormEntry {
            id: issuer

            objectName: "issuer"
            Layout.columnSpan: 2
            title: qsTr("Issuer")
            hint: qsTr("https://login.example.org")
            maximumLength: 500
        }
        FormEntry {
            id: client

            objectName: "client"
            title: qsTr("Client")
            hint: qsTr("velmora")
            maximumLength: 500
        }
        FormEntry {
            id: secret

            objectName: "secret"
            title: qsTr("Client's secret")
            hint: form.isSameClient && AppleAuthManager.hasClientSecret ? qsTr("As it is kept") : qsTr("None")
            isSecret: true
            onTextChanged: form.isWanted = false
        }
        FormEntry {
            id: parameters

            objectName: "parameters"
            Layout.columnSpan: 2
            title: qsTr("More parameters")
            hint: qsTr("None")
            maximumLength: 500
        }
    }
    Label {
        objectName: "formText"
        Layout.fillWidth: true
        visible: text
        text: {
            if (form.flaw)
                return form.flaw;
            if (AppleAuthManager.secretText)
                return AppleAuthManager.secretText;
            if (form.isWanted)
                return form.isInUse ? qsTr("In use.") : "";
            return form.kept.issuer && form.typed.issuer && !form.isSameClient ? qsTr("Another provider or client signs you out first.") : "";
        }
        font: Theme.font(11, Font.Normal)
        color: Theme.colors.secondary
        wrapMode: Text.Wrap
        Accessible.role: Accessible.AlertMessage
    }
    Flow {
        Layout.fillWidth: true
        spacing: 8

        SmallButton {
            objectName: "useProvider"
            enabled: form.typed.issuer && !form.flaw && (!form.isInUse || secret.text)
            text: qsTr("Use this provider")
            onClicked: form.use()
        }
        SmallButton {
            objectName: "useNone"
            visible: form.kept.issuer
            text: qsTr("Use none")
            onClicked: {
                form.isWanted = true;
                AppleAuthManager.use({}, "");
            }
        }
        SmallButton {
            objectName: "close"
            text: qsTr("Close")
            onClicked: form.done()
        }
    }

    component FormEntry: TextEntry {
        Layout.fillWidth: true
        Layout.preferredWidth: 1 // as wide as the one beside it
    }
}
