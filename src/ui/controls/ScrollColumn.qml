// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// A column that scrolls where it is higher than its space, and keeps the focused control in view.
Flickable {
    id: scroll

    default property alias content: column.data
    property alias spacing: column.spacing
    property real padding: 0
    property bool stretches: false ///< the column is at least as high as its place

    function reveal(item: Item): void {
        if (!item || contentHeight <= height || !holds(item))
            return;
        const top = item.mapToItem(column, 0, 0).y + padding;
        contentY = Math.max(0, Math.min(top - padding, Math.max(contentY, top + item.height + padding - height)));
    }

    function holds(item: Item): bool {
        for (let above = item; above; above = above.parent)
            if (above === column)
                return true;
        return false;
    }

    contentHeight: column.height + 2 * padding
    interactive: contentHeight > height
    boundsBehavior: Flickable.StopAtBounds
    clip: interactive

    ColumnLayout {
        id: column

        x: scroll.padding
        y: scroll.padding
        width: scroll.width - 2 * scroll.padding
        height: scroll.stretches ? Math.max(implicitHeight, scroll.height - 2 * scroll.padding) : implicitHeight
    }
    Rectangle {
        parent: scroll
        visible: scroll.interactive
        x: scroll.width - width - 2
        y: scroll.visibleArea.yPosition * scroll.height
        width: 4
        height: scroll.visibleArea.heightRatio * scroll.height
        radius: 2
        color: Theme.faded(Theme.colors.primary, 0.25)
    }
    Connections {
        target: scroll.Window.window

        function onActiveFocusItemChanged() {
            scroll.reveal(scroll.Window.window.activeFocusItem);
        }
    }
}
