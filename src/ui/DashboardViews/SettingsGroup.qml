// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// Settings that belong together, on one ground, with a line between each two.
PodBackground {
    id: group

    default property alias rows: column.data

    implicitHeight: column.implicitHeight + 28

    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 14
        anchors.verticalCenter: parent.verticalCenter
        spacing: 12
    }
}
