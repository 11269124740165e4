// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

import QtQuick
import Velmora

/// What can be pressed, flipped or moved; it does what it would do in a window where all is granted.
GallerySection {
    id: section

    readonly property var states: [{state: "on", isOn: true}, {state: "off", isOn: false}]

    title: "Controls"

    Repeater {
        model: section.states
        delegate: GalleryCell {
            id: rowCell

            required property var modelData
            property bool isOn: modelData.isOn

            name: "ToggleRow, " + modelData.state

            ToggleRow {
                width: 280
                title: "Storage mode"
                subtitle: "Holds the battery at 50%, for weeks without use."
                isOn: rowCell.isOn
                onFlipped: on => rowCell.isOn = on
            }
        }
    }
    Repeater {
        model: section.states
        delegate: GalleryCell {
            id: switchCell

            required property var modelData
            property bool isOn: modelData.isOn

            name: "PlainSwitch, " + modelData.state

            PlainSwitch {
                width: 280
                text: "Demo Simulation"
                isOn: switchCell.isOn
                onFlipped: on => switchCell.isOn = on
            }
        }
    }
    Repeater {
        model: section.states
        delegate: GalleryCell {
            id: markCell

            required property var modelData
            property bool isOn: modelData.isOn

            name: "CheckmarkToggleStyle, " + modelData.state

            CheckmarkToggleStyle {
                width: 280
                text: "Auto-Protect"
                caption: "Limit set to 80%"
                isOn: markCell.isOn
                onFlipped: on => markCell.isOn = on
            }
        }
    }
    GalleryCell {
        name: "ProminentButton"

        ProminentButton {
            width: 240
            text: "Charge to 100%"
            symbol: "bolt.fill"
        }
    }
    Repeater {
        model: [true, false]
        delegate: GalleryCell {
            id: smallCell

            required property bool modelData

            name: modelData ? "SmallButton" : "SmallButton, disabled"
            width: 148

            SmallButton {
                text: "Export CSV"
                enabled: smallCell.modelData
            }
        }
    }
    GalleryCell {
        name: "PlainButton"
        width: 148

        PlainButton {
            text: "Launch Dashboard"
        }
    }
    GalleryCell {
        name: "IconButton"
        width: 148

        IconButton {
            symbol: "gearshape.fill"
            text: "Settings"
        }
    }
    GalleryCell {
        name: "PercentSlider"

        PercentSlider {
            width: 280
            title: "Charge limit"
            caption: "Charging begins again below 78%."
            current: 80
            from: 50
            onChosen: value => current = value
        }
    }
    GalleryCell {
        name: "RangePicker"

        RangePicker {
            choices: ["Day", "Week", "Month", "All"]
            current: "Week"
            onChosen: choice => current = choice
        }
    }
    Repeater {
        model: section.states
        delegate: GalleryCell {
            id: linkCell

            required property var modelData
            property bool isOn: modelData.isOn

            name: "SidebarLink, " + modelData.state

            SidebarLink {
                width: 280
                title: "Health"
                symbol: "heart.fill"
                tint: Theme.colors.batteryDanger
                value: "Health"
                current: linkCell.isOn ? value : ""
                onClicked: linkCell.isOn = !linkCell.isOn
            }
        }
    }
    Repeater {
        model: section.states
        delegate: GalleryCell {
            id: choiceCell

            required property var modelData
            property bool isOn: modelData.isOn

            name: "DeviceChoice, " + modelData.state

            DeviceChoice {
                width: 280
                identifier: "a"
                name: "Attic"
                status: "Charging, heat: Fair, just now"
                battery: "81%"
                symbol: "bolt.fill"
                tint: "batteryGreen"
                selected: choiceCell.isOn
                onClicked: choiceCell.isOn = !choiceCell.isOn
            }
        }
    }
    Repeater {
        model: [{name: "TextEntry, empty", text: "", isSecret: false}, {name: "TextEntry", text: "desk", isSecret: false}, {name: "TextEntry, secret", text: "secret", isSecret: true}]
        delegate: GalleryCell {
            id: entryCell

            required property var modelData

            name: modelData.name

            TextEntry {
                width: 180
                title: "Host"
                hint: "records.example.org"
                text: entryCell.modelData.text
                isSecret: entryCell.modelData.isSecret
            }
        }
    }
}
