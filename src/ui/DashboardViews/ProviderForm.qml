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
    property bool isSent: false ///< and Velmora has not answered
    readonly property bool isBusy: isSent || AppleAuthManager.isKeepingSecret
    readonly property bool isTaken: isWanted && !isBusy && isInUse && !AppleAuthManager.secretText
    readonly property string warning: kept.issuer ? qsTr("Another provider or client, or none, signs you out first.") : ""

    signal done

    spacing: 12
    onKeptTextChanged: {
        const wasWanted = isWanted;
        fill();
        if (wasWanted)
            done();
    }
    onTypedChanged: edited()
    onIsBusyChanged: {
        if (!isBusy)
            keepFocus.start();
    }
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
        edited();
    }

    function edited(): void {
        isWanted = false;
        isSent = false;
    }

    function use(provider: var, clientSecret: string): void {
        AppleAuthManager.use(provider, clientSecret);
        secret.text = "";
        isSent = true;
        isWanted = true;
    }

    Timer { // the button that was pressed may be one that cannot be pressed now
        id: keepFocus

        interval: 0 // once that is settled
        onTriggered: {
            if (!form.visible || !useIt.focus || useIt.enabled)
                return;
            if (AppleAuthManager.secretText)
                secret.focusField();
            else
                close.forceActiveFocus(Qt.TabFocusReason);
        }
    }

    Connections {
        target: AppleAuthManager

        function onChanged(): void {
            form.isSent = false;
        }
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
            onTextChanged: form.edited()
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
    SmallLabel {
        objectName: "formText"
        text: {
            if (form.flaw)
                return form.flaw;
            if (AppleAuthManager.isKeepingSecret)
                return qsTr("The client's secret is being kept …");
            if (AppleAuthManager.secretText)
                return AppleAuthManager.secretText;
            return form.isTaken ? qsTr("In use.") : "";
        }
        Accessible.role: Accessible.AlertMessage
    }
    SmallLabel {
        objectName: "warning"
        text: form.warning
    }
    Flow {
        Layout.fillWidth: true
        spacing: 8

        SmallButton {
            id: useIt

            objectName: "useProvider"
            enabled: !form.isBusy && form.typed.issuer && !form.flaw && (!form.isInUse || secret.text)
            text: qsTr("Use this provider")
            Accessible.description: form.isSameClient ? "" : form.warning
            onClicked: form.use(form.typed, secret.text)
        }
        SmallButton {
            objectName: "useNone"
            visible: form.kept.issuer
            enabled: !form.isBusy
            text: qsTr("Use none")
            Accessible.description: form.warning
            onClicked: form.use({}, "")
        }
        SmallButton {
            id: close

            objectName: "close"
            text: qsTr("Close")
            onClicked: form.done()
        }
    }

    component FormEntry: TextEntry {
        Layout.fillWidth: true
        Layout.preferredWidth: 1 // as wide as the one beside it
    }
    component SmallLabel: Label {
        Layout.fillWidth: true
        visible: text
        font: Theme.font(11, Font.Normal)
        color: Theme.colors.secondary
        wrapMode: Text.Wrap
    }
}
