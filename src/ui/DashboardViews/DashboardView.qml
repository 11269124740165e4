// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// Two columns: the links, and the page that one of them leads to.
FocusScope {
    id: view

    required property RemoteModel battery
    property string selectedTab: "Overview" ///< a page's identifier
    property bool showsSidebar: true

    implicitWidth: 900
    implicitHeight: 600

    Shortcut {
        sequence: "Ctrl+Shift+S"
        onActivated: view.showsSidebar = !view.showsSidebar
    }
    DashboardSidebar {
        id: sidebar

        objectName: "sidebar"
        visible: view.showsSidebar
        width: divider.position
        height: parent.height
        current: view.selectedTab
        onChosen: identifier => view.selectedTab = identifier
    }
    DashboardDetailView {
        objectName: "detail"
        anchors.left: parent.left
        anchors.leftMargin: view.showsSidebar ? divider.position : 0
        anchors.right: parent.right
        height: parent.height
        battery: view.battery
        page: view.selectedTab
    }
    SidebarDivider {
        id: divider

        objectName: "divider"
        visible: view.showsSidebar
        height: parent.height
        lowest: 280
        highest: 450
        position: 300
    }
}
