// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The selected page, or a hint where none is.
Item {
    id: detail

    required property RemoteModel battery
    required property string page ///< identifier
    readonly property string view: Texts.pageView(page)

    onViewChanged: load()
    Component.onCompleted: load()

    function load(): void {
        if (view)
            loader.setSource(view + ".qml", {
                    "battery": battery
                });
        else
            loader.source = "";
    }

    Loader {
        id: loader

        objectName: "page"
        anchors.fill: parent
    }
    Label {
        objectName: "placeholder"
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 48)
        visible: !detail.view
        text: Texts.pagePlaceholder
        font: Theme.font(15, Font.Normal)
        color: Theme.colors.secondary
    }
}
