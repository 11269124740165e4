// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// Journeys: whether the calendar is looked at for them, what it tells, and the full charge before one.
SettingsGroup {
    id: group

    Component.onCompleted: CalendarContextManager.checkNow() // so that what is shown is so

    ToggleRow {
        objectName: "isConsentGiven"
        Layout.fillWidth: true
        title: qsTr("Look for journeys in the calendar")
        subtitle: qsTr("Velmora reads titles and places of the next 24 hours. They stay on this computer.")
        isOn: CalendarContextManager.isConsentGiven
        onFlipped: on => CalendarContextManager.set("isConsentGiven", on)
    }
    SeparatorLine {
        Layout.fillWidth: true
    }
    ToggleRow {
        objectName: "isTravelChargeOn"
        Layout.fillWidth: true
        enabled: CalendarContextManager.isConsentGiven
        title: qsTr("Charge to 100 % before a journey")
        subtitle: {
            const when = qsTr("Ten hours before it, or at eight in the evening before a whole day.");
            return Notifications.lastTravel ? when + " " + Notifications.lastTravel : when;
        }
        isOn: CalendarContextManager.isTravelChargeOn
        onFlipped: on => CalendarContextManager.set("isTravelChargeOn", on)
    }
    SeparatorLine {
        Layout.fillWidth: true
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2

        Label {
            objectName: "journey"
            Layout.fillWidth: true
            text: CalendarContextManager.journeyText
            font: Theme.font(12, Font.Medium)
            wrapMode: Text.Wrap
            maximumLineCount: 2
        }
        Label {
            objectName: "travelCharge"
            Layout.fillWidth: true
            visible: text
            text: CalendarContextManager.chargeText
            font: Theme.font(11, Font.Normal)
            color: Theme.colors.secondary
            wrapMode: Text.Wrap
        }
    }
}
