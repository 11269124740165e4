// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// A figure below its name.
ColumnLayout {
    id: metric

    required property string title
    required property string value
    required property color color

    spacing: 2
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("%1: %2").arg(title).arg(value)

    Label {
        Layout.fillWidth: true
        text: metric.title
        font: Qt.font({
                "family": Theme.fontFamily,
                "pixelSize": Math.round(10 * Theme.fontScale),
                "weight": Font.Bold,
                "capitalization": Font.AllUppercase
            })
        color: Theme.colors.secondary
        spoken: false
    }
    Label {
        Layout.fillWidth: true
        text: metric.value
        font: Theme.font(18, Font.Bold)
        color: metric.color
        spoken: false
    }
}
