// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// The window around the dashboard, or around the installation where there is no daemon. Empty until it is
/// known which.
Window {
    id: window

    required property RemoteModel battery
    property string selectedTab: "Overview"

    readonly property string view: {
        if (!InstallationManager.isKnown)
            return "";
        // A daemon that serves is enough, whatever the service manager says.
        const isServed = InstallationManager.isInstallationCompleted || InstallationManager.isDaemonPresent;
        return isServed ? "DashboardView" : "InstallationView";
    }
    readonly property size least: view === "InstallationView" ? Qt.size(600, 450) : Qt.size(900, 600)
    readonly property bool showsNotice: VersionNotice.showMacOS264Banner

    title: qsTr("Velmora Dashboard")
    width: 900
    height: 600
    color: Theme.colors.controlBackground
    onLeastChanged: fit()
    onViewChanged: load()
    onShowsNoticeChanged: sheet.load()
    onVisibleChanged: if (visible)
        VersionNotice.appeared()
    Component.onCompleted: {
        fit();
        load();
        sheet.load();
    }

    /// A visible window only grows: the user or the window manager may have made it larger. The smallest size
    /// comes first, since from Qt 6.8 on no window is made smaller than that.
    function fit(): void {
        minimumWidth = least.width;
        minimumHeight = least.height;
        if (visible && visibility !== Window.Windowed)
            return;
        width = Math.max(visible ? width : 0, least.width);
        height = Math.max(visible ? height : 0, least.height);
    }

    function load(): void {
        content.setSource(view ? view + ".qml" : "", view === "DashboardView" ? {
                "battery": battery,
                "selectedTab": selectedTab
            } : {});
    }

    WindowFrame {
        window: window
        dark: Appearance.dark
    }
    Loader {
        id: content

        readonly property DashboardView dashboard: item as DashboardView

        objectName: "content"
        anchors.fill: parent
        focus: true
        onLoaded: item.focus = true
    }
    Binding {
        when: content.dashboard
        target: content.dashboard
        property: "selectedTab"
        value: window.selectedTab
    }
    Connections {
        target: content.dashboard

        function onSelectedTabChanged(): void {
            window.selectedTab = content.dashboard.selectedTab;
        }
    }

    Loader {
        id: sheet

        function load(): void {
            setSource(window.showsNotice ? "MacOS264BannerView.qml" : "", {
                    "parent": window.contentItem,
                    "visible": true
                });
        }
    }
    Connections {
        target: sheet.item as MacOS264BannerView

        function onDismissed(): void {
            VersionNotice.dismissed();
        }
        function onClosed(): void {
            VersionNotice.closed();
            content.forceActiveFocus(Qt.PopupFocusReason);
        }
    }
}
