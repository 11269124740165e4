// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import QtQuick.Layouts
import Velmora

/// How far the battery is charged.
DashboardPage {
    id: page

    readonly property bool storage: battery.isStorageModeEnabled

    title: qsTr("Thresholds")
    subtitle: qsTr("How far the battery is charged, and when charging begins again")

    PodBackground {
        Layout.fillWidth: true
        implicitHeight: now.implicitHeight + 28

        RowLayout {
            id: now

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.margins: 14
            anchors.verticalCenter: parent.verticalCenter
            spacing: 12

            SymbolImage {
                name: "bolt.shield.fill"
                size: Math.round(20 * Theme.fontScale)
                color: Theme.colors.accent
            }
            Label {
                objectName: "limiterText"
                Layout.fillWidth: true
                text: page.battery.limiterText
                font: Theme.typography.headlineFont
                wrapMode: Text.Wrap
            }
        }
    }
    RefusalLine {
        battery: page.battery
    }
    SettingsGroup {
        Layout.fillWidth: true

        ToggleRow {
            objectName: "autoProtect"
            Layout.fillWidth: true
            enabled: page.battery.hasLimiter
            title: qsTr("Auto-Protect")
            subtitle: qsTr("Charging stops at the limit.")
            isOn: page.battery.isAppleRecommendedModeEnabled
            onFlipped: on => page.battery.set("isAppleRecommendedModeEnabled", on)
        }
        SeparatorLine {
            Layout.fillWidth: true
        }
        PercentSlider {
            id: limit

            objectName: "limit"
            Layout.fillWidth: true
            enabled: page.battery.hasLimiter
            title: qsTr("Charge limit")
            caption: {
                if (current >= from)
                    return page.battery.limitEffect;
                return qsTr("It is at %1% now, below what can be chosen here.").arg(Math.round(current));
            }
            current: page.battery.customChargeLimit
            from: 50 // narrower than what the daemon takes: a lower limit is set by a script
            to: page.battery.highest("customChargeLimit")
            onChosen: value => page.battery.set("customChargeLimit", value)
        }
        PercentSlider {
            objectName: "hysteresis"
            Layout.fillWidth: true
            enabled: page.battery.hasHysteresis
            title: qsTr("Hysteresis")
            caption: {
                page.battery.limitEffect; // evaluated so that the next value follows its changes
                return page.battery.startEffect(limit.shown, shown);
            }
            unit: qsTr(" points")
            current: page.battery.customHysteresis
            from: page.battery.lowest("customHysteresis")
            to: page.battery.highest("customHysteresis")
            onChosen: value => page.battery.set("customHysteresis", value)
        }
        SeparatorLine {
            Layout.fillWidth: true
        }
        ToggleRow {
            objectName: "storage"
            Layout.fillWidth: true
            enabled: page.battery.hasLimiter
            title: qsTr("Storage mode")
            subtitle: qsTr("Holds the battery at 50% for weeks without use, whatever the limit is.")
            isOn: page.storage
            onFlipped: on => page.battery.set("isStorageModeEnabled", on)
        }
    }
    ProminentButton {
        objectName: "quickCharge"
        enabled: page.battery.hasLimiter
        Layout.preferredWidth: Math.max(260, implicitWidth)
        text: Texts.quickChargeTitle(page.battery.isTemporaryOverrideEnabled)
        symbol: Texts.quickChargeSymbol(page.battery.isTemporaryOverrideEnabled)
        tint: Theme.color(Texts.quickChargeTint(page.battery.isTemporaryOverrideEnabled))
        onClicked: page.battery.toggleTemporaryOverride()
    }
    Label {
        text: qsTr("Desktop Widgets")
        font: Theme.typography.headlineFont
        Accessible.role: Accessible.Heading
    }
    SettingsGroup {
        Layout.fillWidth: true

        WidgetRow {
            Layout.fillWidth: true
            settings: Widgets.small
            size: "small"
            atLogIn: qsTr("Small widget at log-in")
            show: qsTr("Show small widget")
            subtitle: qsTr("The ring, the percentage and what the battery does.")
        }
        SeparatorLine {
            Layout.fillWidth: true
        }
        WidgetRow {
            Layout.fillWidth: true
            settings: Widgets.medium
            size: "medium"
            atLogIn: qsTr("Medium widget at log-in")
            show: qsTr("Show medium widget")
            subtitle: qsTr("The same, and how long the battery lasts, its health, and how warm the machine is.")
        }
    }
    Item {
        Layout.fillHeight: true
    }
}
