// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// A short text on a background with round ends.
ContinuousRectangle {
    property alias text: label.text
    property alias font: label.font
    property alias textColor: label.color
    property alias spoken: label.spoken
    property real horizontalPadding: 8
    property real verticalPadding: 3

    implicitWidth: Math.ceil(label.implicitWidth) + 2 * horizontalPadding
    implicitHeight: label.implicitHeight + 2 * verticalPadding
    radius: height / 2

    Label {
        id: label

        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 2 * parent.horizontalPadding)
    }
}
