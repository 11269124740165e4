// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velmora

/// A line of text to be typed, below what it is. Emits `accepted` on Enter.
ColumnLayout {
    id: entry

    required property string title
    property alias text: field.text
    property string hint ///< shown while nothing is typed
    property bool isSecret: false ///< shows dots
    property alias maximumLength: field.maximumLength
    property alias validator: field.validator

    signal accepted

    function focusField(): void {
        field.forceActiveFocus(Qt.TabFocusReason);
    }

    spacing: 3

    Label {
        Layout.fillWidth: true
        text: entry.title
        font: Theme.font(11, Font.Medium)
        color: Theme.colors.secondary
        spoken: false
    }
    T.TextField {
        id: field

        objectName: "field"
        Layout.fillWidth: true
        implicitWidth: 120
        implicitHeight: contentHeight + topPadding + bottomPadding
        leftPadding: 8
        rightPadding: 8
        topPadding: 5
        bottomPadding: 5
        enabled: entry.enabled
        opacity: enabled ? 1 : 0.5
        font: Theme.typography.bodyFont
        color: Theme.colors.primary
        selectionColor: Theme.colors.accent
        selectedTextColor: "white"
        echoMode: entry.isSecret ? TextInput.Password : TextInput.Normal
        inputMethodHints: Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase | (entry.isSecret ? Qt.ImhSensitiveData : 0)
        selectByMouse: true
        maximumLength: 255
        onAccepted: entry.accepted()
        onTextChanged: showBeginning()
        onFocusChanged: showBeginning()
        // What screen readers describe it by; it is shown below. They are not told the name of a secret's field.
        placeholderText: entry.isSecret ? qsTr("%1: %2").arg(entry.title).arg(entry.hint) : entry.hint
        Accessible.name: entry.title

        function showBeginning(): void {
            if (!focus)
                cursorPosition = 0; // what is longer than the field is known by that
        }

        background: Rectangle {
            radius: 6
            color: Theme.dark ? Theme.grey(1, 0.06) : "white"
            border.width: 1
            border.color: Theme.colors.edge

            Label {
                anchors.fill: parent
                anchors.leftMargin: field.leftPadding
                anchors.rightMargin: field.rightPadding
                verticalAlignment: Text.AlignVCenter
                visible: !field.text && !field.preeditText
                text: entry.hint
                color: Theme.faded(Theme.colors.secondary, 0.6)
                spoken: false
            }
        }

        FocusRing {
            visible: field.activeFocus
            gap: 1
            radius: 7
        }
    }
}
