// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// One of the desktop's widgets: a button that shows it now, a switch that has it shown at log-in.
RowLayout {
    id: row

    required property RemoteWidget settings
    required property string size ///< as Requests.openWidget takes it
    required property string atLogIn ///< the switch's title
    required property string show    ///< the button's accessible name
    required property string subtitle

    spacing: 16

    ToggleRow {
        objectName: row.size + "AtLogIn"
        Layout.fillWidth: true
        title: row.atLogIn
        subtitle: row.subtitle
        isOn: row.settings.isShownAtLogIn
        onFlipped: on => row.settings.set("isShownAtLogIn", on)
    }
    SmallButton {
        objectName: row.size + "Show"
        text: qsTr("Show")
        Accessible.name: row.show
        onClicked: Requests.openWidget(row.size)
    }
}
