// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velmora

/// The notice of the system's own charge limiter, over a window. Its button answers it; Escape only closes it
/// for now.
T.Dialog {
    id: sheet

    signal dismissed ///< answered; it closes next

    title: qsTr("Apple Added a Charge Limiter")
    anchors.centerIn: parent
    width: Math.min(520, parent.width - 32)
    height: Math.min(implicitHeight, parent.height - 24)
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 24
    topPadding: 16
    bottomPadding: 16
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape
    Component.onCompleted: contentItem.parent.Accessible.name = title

    T.Overlay.modal: Rectangle {
        color: Theme.grey(0, Theme.dark ? 0.5 : 0.25)
    }
    background: ContinuousRectangle {
        radius: 12
        color: Theme.colors.menuBackground
        edgeColor: Theme.colors.edge
        edgeWidth: 1
    }
    contentItem: ColumnLayout {
        spacing: Theme.room(12)

        ScrollColumn {
            objectName: "reasons"
            Layout.fillWidth: true
            Layout.fillHeight: true
            implicitHeight: contentHeight
            spacing: Theme.room(9)

            SymbolImage {
                Layout.alignment: Qt.AlignHCenter
                name: "bolt.ring.closed"
                size: 40
                color: Theme.colors.accent
            }
            Label {
                objectName: "title"
                Layout.fillWidth: true
                text: sheet.title
                font: Theme.font(20, Font.Bold)
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                Accessible.role: Accessible.Heading
            }
            Label {
                objectName: "body"
                Layout.fillWidth: true
                text: qsTr("macOS 26.4 now includes a basic 80–100% charge limit built in. "
                           + "Here's what Velmora does that Apple can't.")
                font: Theme.font(13, Font.Normal)
                color: Theme.colors.secondary
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
            DiffRow {
                symbol: "slider.horizontal.below.square.and.square.filled"
                title: qsTr("Sub-80% limits (50%, 60%, 70%, custom)")
                subtitle: qsTr("Apple only goes down to 80%. Storage mode locks at 50% for long-term storage.")
            }
            DiffRow {
                symbol: "iphone.radiowaves.left.and.right"
                title: qsTr("Control from your iPhone & Apple Watch")
                subtitle: qsTr("Apple's limiter is Mac-only. Velmora lets you monitor and adjust from any device.")
            }
            DiffRow {
                symbol: "calendar.badge.checkmark"
                title: qsTr("Smart Context — auto full charge on travel days")
                subtitle: qsTr("Velmora reads your calendar and allows 100% when you have a flight or trip.")
            }
            DiffRow {
                symbol: "chart.xyaxis.line"
                title: qsTr("Advanced analytics + degradation rate")
                subtitle: qsTr("Track your battery health trend as −%/month and predict replacement date.")
            }
            DiffRow {
                symbol: "brain"
                title: qsTr("AI replacement prediction")
                subtitle: qsTr("Know when your battery needs replacement before it actually fails.")
            }
        }
        ProminentButton {
            objectName: "answer"
            Layout.fillWidth: true
            focus: true
            text: qsTr("Got it, keep using Velmora")
            onClicked: {
                sheet.dismissed();
                sheet.close();
            }
        }
    }
}
