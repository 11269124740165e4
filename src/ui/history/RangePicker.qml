// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// One of a few words to choose, side by side; the arrow keys go from one to the next.
Rectangle {
    id: picker

    required property var choices ///< texts in the reader's language
    required property string current

    signal chosen(string choice)

    function step(from: int, by: int): void {
        const segment = segments.itemAt(from + by);
        if (!segment)
            return;
        segment.forceActiveFocus(Qt.TabFocusReason);
        picker.chosen(picker.choices[from + by]);
    }

    implicitWidth: row.implicitWidth + 4
    implicitHeight: row.implicitHeight + 4
    radius: 8
    color: Theme.grey(Theme.dark ? 1 : 0, 0.06)
    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Range")

    Row {
        id: row

        x: 2
        y: 2

        Repeater {
            id: segments

            model: picker.choices
            delegate: RangeSegment {
            }
            onItemAdded: (index, item) => {
                const segment = item as RangeSegment;
                segment.current = Qt.binding(() => picker.current);
                segment.clicked.connect(() => picker.chosen(segment.modelData));
                segment.stepped.connect(by => picker.step(index, by));
            }
        }
    }
}
