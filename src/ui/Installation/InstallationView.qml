// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velmora

/// Asks for leave to install the daemon, for as long as it is not there.
FocusScope {
    id: view

    implicitWidth: 600
    implicitHeight: 450

    ScrollColumn {
        objectName: "scroll"
        anchors.centerIn: parent
        width: Math.min(parent.width, 600)
        height: Math.min(parent.height, contentHeight)
        padding: Theme.room(20)
        spacing: Theme.room(20)

        Rectangle {
            Layout.alignment: Qt.AlignHCenter
            implicitWidth: 120
            implicitHeight: 120
            radius: 60
            color: Theme.faded(Theme.colors.blue, 0.1)

            SymbolImage {
                anchors.centerIn: parent
                name: "bolt.shield.fill"
                size: 60
                color: Theme.colors.blue
            }
        }
        Label {
            objectName: "title"
            Layout.fillWidth: true
            text: qsTr("System Installation Required")
            font: Theme.font(32, Font.Bold)
            fontSizeMode: Text.HorizontalFit
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.Heading
        }
        Label {
            objectName: "body"
            Layout.fillWidth: true
            text: qsTr("To manage your MacBook's hardware charging limits, Velmora needs to install a "
                       + "background helper tool. This requires your permission.")
            font: Theme.font(16, Font.Normal)
            color: Theme.colors.secondary
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        PressButton {
            id: button

            objectName: "install"
            Layout.alignment: Qt.AlignHCenter
            visible: !InstallationManager.isInstalling
            focus: true
            implicitWidth: 240
            implicitHeight: 48
            ringRadius: 12
            text: qsTr("Grant Access & Install")
            font: Theme.typography.headlineFont
            onClicked: InstallationManager.install()

            background: Rectangle {
                radius: 12
                color: button.down ? Qt.darker(Theme.colors.blue, 1.15) : Theme.colors.blue
            }
            contentItem: Label {
                text: button.text
                font: button.font
                color: "white"
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                spoken: false
            }
        }
        Label {
            objectName: "hint"
            Layout.fillWidth: true
            visible: !InstallationManager.isInstalling
            text: qsTr("Standard macOS security prompt will follow")
            font: Theme.typography.captionFont
            color: Theme.colors.secondary
            horizontalAlignment: Text.AlignHCenter
        }
        ColumnLayout {
            Layout.alignment: Qt.AlignHCenter
            visible: InstallationManager.isInstalling
            spacing: 12

            T.ProgressBar {
                id: bar

                objectName: "progress"
                Layout.alignment: Qt.AlignHCenter
                implicitWidth: 300
                implicitHeight: 6
                value: InstallationManager.installationProgress
                Accessible.name: caption.text

                background: Rectangle {
                    radius: 3
                    color: Theme.faded(Theme.colors.primary, 0.1)
                }
                contentItem: Item {
                    Rectangle {
                        width: bar.visualPosition * parent.width
                        height: parent.height
                        radius: 3
                        color: Theme.colors.blue
                    }
                }
            }
            Label {
                id: caption

                Layout.alignment: Qt.AlignHCenter
                text: qsTr("Installing background services...")
                font: Theme.typography.captionFont
                color: Theme.colors.secondary
                spoken: false
            }
        }
    }
}
