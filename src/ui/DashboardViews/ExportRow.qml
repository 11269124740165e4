// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// Exports what is shown as a table or as a picture, and says where the file is.
RowLayout {
    id: row

    required property Trends trends
    required property HistoryPlot plot

    spacing: 8
    enabled: !trends.empty

    Label {
        id: notice

        objectName: "notice"
        Layout.fillWidth: true
        font: Theme.font(11, Font.Normal)
        color: Theme.colors.secondary
        elide: Text.ElideMiddle
    }
    SmallButton {
        objectName: "exportTable"
        text: qsTr("Export CSV")
        onClicked: notice.text = row.trends.saveCsv()
    }
    SmallButton {
        objectName: "exportPicture"
        text: qsTr("Export PNG")
        onClicked: row.plot.savePicture(said => notice.text = said)
    }
}
