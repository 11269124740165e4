// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// Why the last change was refused; takes no room where none was.
Label {
    required property RemoteModel battery

    objectName: "refusal"
    Layout.fillWidth: true
    visible: text.length > 0
    text: battery.refusalText
    wrapMode: Text.Wrap
    Accessible.role: Accessible.AlertMessage
}
