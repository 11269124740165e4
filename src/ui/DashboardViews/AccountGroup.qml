// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// Who is signed in, what can be done about it, and with which provider.
SettingsGroup {
    id: group

    readonly property bool isKnown: AppleAuthManager.isSignedIn || AppleAuthManager.isUnconfirmed
    readonly property bool isIdle: !AppleAuthManager.isLoading
    property bool isFormShown: false

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2

        AccountLabel {
            objectName: "userName"
            text: AppleAuthManager.name
            font: Theme.typography.headlineFont
        }
        AccountLabel {
            objectName: "userMail"
            text: AppleAuthManager.mail
            color: Theme.colors.secondary
        }
        AccountLabel {
            objectName: "accountState"
            text: AppleAuthManager.stateText
            Accessible.role: AppleAuthManager.isRevoked ? Accessible.AlertMessage : Accessible.StaticText
        }
    }
    AccountLabel {
        objectName: "accountError"
        text: AppleAuthManager.errorText
        Accessible.role: Accessible.AlertMessage
    }
    Flow {
        Layout.fillWidth: true
        visible: !group.isIdle || group.isKnown || AppleAuthManager.isUnread || AppleAuthManager.hasProvider || !group.isFormShown // any is
        spacing: 8

        Timer { // a press may replace its button by another one, which has the keyboard then
            id: keepFocus

            interval: 0 // once it is settled which of them are shown
            onTriggered: {
                for (const act of [signIn, cancel, again, signOut, change, choose])
                    if (act.visible)
                        return act.forceActiveFocus(Qt.TabFocusReason);
            }
        }

        AccountButton {
            id: choose

            objectName: "chooseProvider"
            visible: group.isIdle && !AppleAuthManager.hasProvider && !group.isFormShown
            text: qsTr("No provider is set: choose one …")
            onClicked: group.isFormShown = true
        }
        AccountButton {
            id: signIn

            objectName: "signIn"
            visible: group.isIdle && !AppleAuthManager.isSignedIn && AppleAuthManager.hasProvider
            text: qsTr("Sign in")
            onClicked: AppleAuthManager.signIn()
            onVanished: keepFocus.start()
        }
        AccountButton {
            id: cancel

            objectName: "cancelSignIn"
            visible: AppleAuthManager.isLoading
            text: qsTr("Cancel")
            onClicked: AppleAuthManager.cancelSignIn()
            onVanished: keepFocus.start()
        }
        AccountButton {
            id: again

            objectName: "checkAgain"
            visible: group.isIdle && (AppleAuthManager.isUnread || AppleAuthManager.isUnconfirmed && AppleAuthManager.hasProvider)
            text: qsTr("Check again")
            onClicked: AppleAuthManager.checkAgain()
            onVanished: keepFocus.start()
        }
        AccountButton {
            id: signOut

            objectName: "signOut"
            visible: group.isIdle && group.isKnown
            text: qsTr("Sign out")
            onClicked: AppleAuthManager.signOut()
            onVanished: keepFocus.start()
        }
        AccountButton {
            id: change

            objectName: "changeProvider"
            visible: AppleAuthManager.hasProvider && !group.isFormShown
            text: qsTr("Change the provider …")
            onClicked: group.isFormShown = true
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2

        SmallLabel {
            objectName: "providerText"
            visible: AppleAuthManager.hasProvider
            text: AppleAuthManager.providerText
        }
        SmallLabel {
            objectName: "purpose"
            text: AppleAuthManager.purposeText
        }
    }
    SeparatorLine {
        Layout.fillWidth: true
        visible: form.visible
    }
    ProviderForm {
        id: form

        objectName: "provider"
        Layout.fillWidth: true
        visible: group.isFormShown
        onDone: {
            group.isFormShown = false;
            keepFocus.start();
        }
    }

    component AccountLabel: Label {
        Layout.fillWidth: true
        visible: text
        horizontalAlignment: Text.AlignLeft // of a name that is written from the right, too
        wrapMode: Text.Wrap
    }
    component SmallLabel: AccountLabel {
        font: Theme.font(11, Font.Normal)
        color: Theme.colors.secondary
    }
    component AccountButton: SmallButton {
        signal vanished ///< with the keyboard

        Accessible.description: AppleAuthManager.stateText
        onVisibleChanged: {
            if (!visible && activeFocus)
                vanished();
        }
    }
}
