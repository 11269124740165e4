// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velmora

/// A setting in percent. Shows the new value while it is dragged, emits `chosen` when it is released, and then
/// shows the setting as it is.
Column { // a layout would keep the place that it had for a caption of more lines
    id: setting

    required property string title
    required property real current
    property string unit: "%"
    property string caption
    property real from: 0
    property real to: 100
    readonly property real shown: slider.value
    readonly property real fading: enabled ? 1 : 0.5 ///< not of the caption: it says why there is nothing to choose

    signal chosen(real value)

    function settle(): void {
        slider.value = setting.current;
    }

    spacing: 2
    onCurrentChanged: if (!slider.pressed)
        settle()
    Component.onCompleted: settle()

    Timer {
        id: patience ///< for the answer: the change may be refused

        interval: 1000
        onTriggered: if (!slider.pressed)
            setting.settle()
    }
    RowLayout {
        width: parent.width
        opacity: setting.fading
        spacing: 8

        Label {
            Layout.fillWidth: true
            text: setting.title
            spoken: false
        }
        Label {
            objectName: "value"
            text: Math.round(slider.pressed ? slider.value : setting.current) + setting.unit
            font: Theme.font(13, Font.DemiBold)
            color: slider.pressed ? Theme.colors.accent : Theme.colors.primary
            spoken: false
        }
    }
    Label {
        objectName: "caption"
        width: parent.width
        visible: text
        text: setting.caption
        font: Theme.typography.captionFont
        color: Theme.colors.secondary
        wrapMode: Text.Wrap
        spoken: false
    }
    T.Slider {
        id: slider

        objectName: "slider"
        width: parent.width
        implicitHeight: 24
        opacity: setting.fading
        from: setting.from
        to: setting.to
        stepSize: 1
        snapMode: T.Slider.SnapAlways
        focusPolicy: Qt.StrongFocus
        hoverEnabled: true
        onFromChanged: if (!pressed)
            setting.settle()
        onPressedChanged: ask()
        onValueChanged: ask() // a screen reader neither presses nor lets go
        readonly property real minimumValue: from // for screen readers
        readonly property real maximumValue: to
        Keys.onPressed: event => {
            event.accepted = event.key === Qt.Key_Home || event.key === Qt.Key_End;
            if (event.accepted)
                value = event.key === Qt.Key_Home ? from : to;
        }
        Accessible.name: setting.title
        Accessible.description: setting.caption

        function ask(): void {
            if (pressed)
                return;
            const shown = Math.max(from, Math.min(to, setting.current));
            if (Math.round(value) === Math.round(shown))
                return;
            patience.restart();
            setting.chosen(Math.round(value));
        }

        background: Rectangle {
            y: (slider.height - height) / 2
            width: slider.width
            height: 4
            radius: 2
            color: Theme.faded(Theme.colors.primary, 0.12)

            Rectangle {
                width: slider.handle.x + slider.handle.width / 2
                height: parent.height
                radius: 2
                color: Theme.colors.accent
            }
        }
        handle: Rectangle {
            x: slider.visualPosition * (slider.width - width)
            y: (slider.height - height) / 2
            width: 18
            height: 18
            radius: 9
            color: slider.pressed ? "#f0f0f0" : "white"
            border.width: 1
            border.color: Theme.grey(0, 0.2)
        }

        FocusRing {
            visible: slider.visualFocus
            gap: 2
        }
    }
}
