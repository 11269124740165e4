// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// The links to all pages, by sections.
Rectangle {
    id: sidebar

    required property string current ///< the selected page's identifier

    signal chosen(string identifier)

    function step(from: int, by: int): void {
        const link = links.itemAt(from + by) as SidebarEntry;
        if (!link)
            return;
        link.focusByKey();
        sidebar.chosen(link.identifier);
    }

    color: Theme.grey(Theme.dark ? 1 : 0, 0.03)
    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Pages")

    ScrollColumn {
        anchors.fill: parent
        padding: 12
        spacing: 2
        stretches: true

        Repeater {
            id: links

            model: Texts.pages
            delegate: SidebarEntry {
            }
            onItemAdded: (index, item) => {
                const entry = item as SidebarEntry;
                entry.current = Qt.binding(() => sidebar.current);
                entry.chosen.connect(() => sidebar.chosen(entry.identifier));
                entry.stepped.connect(by => sidebar.step(index, by));
            }
        }
        Item {
            Layout.fillHeight: true
        }
        Label {
            objectName: "about"
            Layout.fillWidth: true
            Layout.leftMargin: 10
            text: Texts.about
            font: Theme.font(11, Font.Normal)
            color: Theme.colors.secondary
        }
    }
}
