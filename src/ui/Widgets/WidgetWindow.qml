// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The frameless window around a desktop widget: it goes where it is dragged, by pointer or arrow keys, and
/// its menu pins it, has it shown at log-in and closes it. Its children are placed in `content`.
Window {
    id: window

    required property RemoteModel battery
    required property RemoteWidget settings
    required property string accessibleName ///< all of it in a sentence
    required property real plainWidth ///< at the usual size of type
    property alias firstTop: frame.firstTop
    default property alias content: content.data

    readonly property real magnification: Math.max(1, Theme.fontScale)
    readonly property size only: Qt.size(Math.round(plainWidth * magnification), Math.round(160 * magnification))

    width: only.width
    height: only.height
    flags: Qt.Window | Qt.FramelessWindowHint | (settings.isPinned ? Qt.WindowStaysOnTopHint : 0)
           | (frame.isUnmanaged ? Qt.BypassWindowManagerHint : 0)
    color: Appearance.translucent ? "transparent" : ground.color
    onOnlyChanged: fit()
    Component.onCompleted: fit()

    /// Its limits make way first: from Qt 6.8 on they hold while the size changes.
    function fit(): void {
        minimumWidth = minimumHeight = 0;
        maximumHeight = only.height;
        maximumWidth = only.width;
        height = only.height;
        width = only.width;
        minimumHeight = only.height;
        minimumWidth = only.width;
    }

    WidgetFrame {
        id: frame

        window: window
        settings: window.settings
        onFrameWanted: ground.update()
    }
    Item {
        id: hold

        property bool byKeyboard: false

        objectName: "hold"
        anchors.fill: parent
        focus: true
        Accessible.role: Accessible.Button
        Accessible.focusable: true
        Accessible.name: window.accessibleName
        Accessible.description: qsTr("Opens the dashboard. Arrow keys move it, the menu key opens its menu.")
        Accessible.onPressAction: Requests.openDashboard()
        Keys.onLeftPressed: frame.nudge(-8, 0)
        Keys.onRightPressed: frame.nudge(8, 0)
        Keys.onUpPressed: frame.nudge(0, -8)
        Keys.onDownPressed: frame.nudge(0, 8)
        Keys.onReturnPressed: Requests.openDashboard()
        Keys.onEnterPressed: Requests.openDashboard()
        Keys.onSpacePressed: Requests.openDashboard()
        Keys.onPressed: event => {
            const isShiftF10 = event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier;
            event.accepted = event.key === Qt.Key_Menu || isShiftF10;
            if (event.accepted)
                menu.openAt(0);
        }
        Keys.onReleased: byKeyboard = true

        GlassyBackground {
            id: ground

            anchors.margins: 0
            inset: 0
            radius: Appearance.translucent ? 14 : 0
            color: Theme.grey(Theme.dark ? 0.15 : 0.98, Appearance.translucent ? 0.9 : 1)
            edgeWidth: 1
            shadowColor: "transparent"
        }
        Item {
            id: content

            anchors.fill: parent
            anchors.margins: 14
        }
        FocusRing {
            visible: hold.activeFocus && hold.byKeyboard
            gap: -3
            radius: 11
        }
        MouseArea {
            property bool isDragging: false
            property point dragOffset

            anchors.fill: parent
            acceptedButtons: Qt.LeftButton | Qt.RightButton
            cursorShape: isDragging ? Qt.ClosedHandCursor : Qt.ArrowCursor
            onPressed: mouse => {
                hold.byKeyboard = false;
                dragOffset = Qt.point(mouse.x, mouse.y);
                if (mouse.button === Qt.RightButton)
                    menu.popup(mouse.x, mouse.y);
            }
            onPositionChanged: mouse => {
                const distance = Math.hypot(mouse.x - dragOffset.x, mouse.y - dragOffset.y);
                if (isDragging) {
                    frame.drag();
                } else if (pressedButtons & Qt.LeftButton && distance >= 4) {
                    isDragging = true; // once a press: the window manager may move it from here
                    frame.beginDrag();
                }
            }
            onReleased: {
                if (isDragging)
                    frame.endDrag();
                isDragging = false;
            }
            onCanceled: isDragging = false
            onDoubleClicked: mouse => {
                if (mouse.button === Qt.LeftButton)
                    Requests.openDashboard();
            }
            onPressAndHold: mouse => {
                if (mouse.source !== Qt.MouseEventNotSynthesized)
                    menu.popup(mouse.x, mouse.y); // by a finger
            }
        }
        WidgetMenu {
            id: menu

            objectName: "menu"
            settings: window.settings
            onDashboardWanted: Requests.openDashboard()
            onCloseWanted: window.close()
        }
    }
}
