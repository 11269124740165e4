// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// A link of the sidebar, below its section's name where it is the first of one.
ColumnLayout {
    id: entry

    required property int index
    required property var modelData
    property string current
    readonly property string identifier: modelData.identifier
    readonly property bool opensSection: index === 0 || Texts.pages[index - 1].section !== modelData.section

    signal chosen
    signal stepped(int by)

    function focusByKey(): void {
        link.forceActiveFocus(Qt.TabFocusReason);
    }

    spacing: 2
    Layout.fillWidth: true

    Label {
        Layout.fillWidth: true
        Layout.topMargin: entry.index === 0 ? 4 : 16
        Layout.leftMargin: 8
        Layout.bottomMargin: 2
        visible: entry.opensSection
        text: entry.modelData.section
        font: Theme.font(11, Font.DemiBold)
        color: Theme.colors.secondary
        Accessible.role: Accessible.Heading
    }
    SidebarLink {
        id: link

        objectName: "link" + entry.identifier
        Layout.fillWidth: true
        title: entry.modelData.title
        symbol: entry.modelData.icon
        tint: Theme.color(entry.modelData.color)
        value: entry.identifier
        current: entry.current
        onClicked: entry.chosen()
        Keys.onUpPressed: entry.stepped(-1)
        Keys.onDownPressed: entry.stepped(1)
    }
}
