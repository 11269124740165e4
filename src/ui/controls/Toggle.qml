// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velmora

/// The base of all switches: the label with a caption below it, a spacer, and the switch's mark. A switch shows
/// the state, not the click: a click emits `flipped`, and `isOn` follows once the change is made.
T.CheckBox {
    id: toggle

    required property bool isOn
    required property Item mark
    property color color: Theme.colors.primary
    property string caption
    property font captionFont: Theme.typography.captionFont
    property int captionLines: 1

    signal flipped(bool on)

    opacity: enabled ? 1 : 0.5
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    font: Theme.typography.bodyFont
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    checkState: isOn ? Qt.Checked : Qt.Unchecked
    nextCheckState: () => checkState
    onClicked: flipped(!isOn)
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Accessible.name: text
    Accessible.description: caption
    Accessible.checked: isOn // otherwise Qt 6.4 keeps reporting the initial state
    Accessible.onPressAction: clicked()
    Accessible.onToggleAction: clicked()

    contentItem: RowLayout {
        spacing: 8

        ColumnLayout {
            spacing: 1

            Label {
                Layout.fillWidth: true
                text: toggle.text
                font: toggle.font
                color: toggle.color
                spoken: false
            }
            Label {
                objectName: "caption"
                Layout.fillWidth: true
                visible: text
                text: toggle.caption
                font: toggle.captionFont
                color: Theme.colors.secondary
                wrapMode: Text.Wrap
                maximumLineCount: toggle.captionLines
                spoken: false
            }
        }
        Item {
            implicitWidth: toggle.mark.width
            implicitHeight: toggle.mark.height
            data: [toggle.mark]
        }
    }

    FocusRing {
        visible: toggle.visualFocus
        gap: 5
    }
}
