// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// One thing to look at, with its name below it.
Item {
    id: cell

    property string name
    default property alias content: stage.data

    objectName: name
    implicitWidth: 304
    implicitHeight: 132

    Item {
        id: stage

        objectName: "stage"
        x: Math.round((cell.width - width) / 2)
        y: Math.round((cell.height - caption.height - height) / 2)
        width: childrenRect.width
        height: childrenRect.height
    }
    Label {
        id: caption

        anchors.bottom: parent.bottom
        width: parent.width
        text: cell.name
        font: Theme.font(9, Font.Normal)
        color: Theme.colors.secondary
        horizontalAlignment: Text.AlignHCenter
    }
}
