// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

pragma Singleton
import QtQuick
import Velmora

/// Colours, gradients and type that all windows share. A point of type is a pixel before scaling.
QtObject {
    id: theme

    readonly property bool dark: Appearance.dark
    readonly property real fontScale: Appearance.fontScale
    readonly property string fontFamily: Fonts.rounded

    readonly property Colors colors: Colors {
    }
    readonly property Gradients gradients: Gradients {
        colors: theme.colors
    }
    readonly property Typography typography: Typography {
        family: theme.fontFamily
        scale: theme.fontScale
    }

    /// A colour by its name; what has no such name is shown in the secondary one.
    function color(name: string): color {
        return colors[name] ?? colors.secondary;
    }

    /// `level` (0 black, 1 white) at this opacity.
    function grey(level: real, opacity: real): color {
        return Qt.rgba(level, level, level, opacity);
    }

    function faded(color: color, opacity: real): color {
        return Qt.rgba(color.r, color.g, color.b, color.a * opacity);
    }

    /// The background of something that can be selected in a list.
    function rowColor(selected: bool, down: bool, hovered: bool): color {
        if (selected)
            return faded(colors.accent, dark ? 0.32 : 0.16);
        return down ? colors.pressed : hovered ? colors.hover : "transparent";
    }

    function font(points: real, weight: int): font {
        return typography.fontOf(points, weight);
    }

    /// This much room between things, and around them; less where large type needs it.
    function room(points: real): real {
        return Math.round(points * Math.min(1, 2.2 - 1.2 * fontScale));
    }

    component Colors: QtObject {
        readonly property color batteryGreen: Qt.rgba(0.2039, 0.7804, 0.3490, 1)
        readonly property color batteryWarning: Qt.rgba(1, 0.8, 0, 1)
        readonly property color batteryDanger: Qt.rgba(1, 0.2314, 0.1882, 1)
        readonly property color accent: Qt.rgba(0, 0.48, 1, 1)
        readonly property color orange: Qt.rgba(1, 0.6, 0, 1)

        readonly property color blue: Appearance.dark ? "#0a84ff" : "#007aff"
        readonly property color green: Appearance.dark ? "#32d74b" : "#28cd41"
        readonly property color primary: Appearance.dark ? Qt.rgba(1, 1, 1, 0.9) : Qt.rgba(0, 0, 0, 0.87)
        readonly property color secondary: Appearance.dark ? Qt.rgba(1, 1, 1, 0.6) : Qt.rgba(0, 0, 0, 0.6)
        readonly property color separator: Appearance.dark ? Qt.rgba(1, 1, 1, 0.4) : Qt.rgba(0, 0, 0, 0.4)
        readonly property color edge: Appearance.dark ? Qt.rgba(1, 1, 1, 0.14) : Qt.rgba(0, 0, 0, 0.14)
        readonly property color hover: Appearance.dark ? Qt.rgba(1, 1, 1, 0.08) : Qt.rgba(0, 0, 0, 0.05)
        readonly property color pressed: Appearance.dark ? Qt.rgba(1, 1, 1, 0.16) : Qt.rgba(0, 0, 0, 0.11)
        readonly property color controlBackground: Appearance.dark ? "#1e1e1e" : "#ffffff"
        readonly property color menuBackground: Appearance.dark ? "#2e2e2e" : "#fafafa"
        readonly property color focusRing: Qt.rgba(0, 0.48, 1, Appearance.dark ? 0.85 : 0.6)
    }

    component Gradients: QtObject {
        id: gradients

        required property Colors colors
        readonly property TwoStops primary: TwoStops {
            from: gradients.colors.accent
            to: Qt.alpha(from, 0.8)
        }
        readonly property TwoStops healthy: TwoStops {
            from: gradients.colors.batteryGreen
            to: Qt.alpha(from, 0.7)
        }
        readonly property TwoStops active: TwoStops {
            from: gradients.colors.accent
            to: Qt.alpha(from, 0.6)
        }
        readonly property TwoStops lowPower: TwoStops {
            from: gradients.colors.batteryDanger
            to: Qt.alpha(from, 0.7)
        }
    }

    component Typography: QtObject {
        id: typography

        required property string family
        required property real scale

        readonly property font titleFont: fontOf(17, Font.Bold)
        readonly property font headlineFont: fontOf(13, Font.DemiBold)
        readonly property font bodyFont: fontOf(13, Font.Normal)
        readonly property font captionFont: fontOf(10, Font.Normal)
        readonly property font statusFont: fontOf(34, Font.Bold)

        function fontOf(points: real, weight: int): font {
            return Qt.font({
                    "family": family,
                    "pixelSize": Math.round(points * scale),
                    "weight": weight
                });
        }
    }
}
