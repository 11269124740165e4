// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// Cells that belong together, in as many rows as they need.
ColumnLayout {
    id: section

    required property string title
    default property alias cells: flow.data

    objectName: title
    Layout.fillWidth: true
    spacing: 8

    Label {
        text: section.title
        font: Theme.typography.titleFont
        Accessible.role: Accessible.Heading
    }
    SeparatorLine {
        Layout.fillWidth: true
    }
    Flow {
        id: flow

        Layout.fillWidth: true
        spacing: 8
    }
}
