// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

/* exported init */

const {Gio, GLib, GObject, Shell} = imports.gi;
const Main = imports.ui.main;
const PopupMenu = imports.ui.popupMenu;
const QuickSettings = imports.ui.quickSettings;
const ExtensionUtils = imports.misc.extensionUtils;
const _ = ExtensionUtils.gettext;

/** A single line: the name is in the menu's header. */
function label(button, name, sentence) {
    button['title' in button ? 'title' : 'label'] = sentence; // renamed in 44
}

function addToQuickSettings(indicator) {
    const {quickSettings} = Main.panel.statusArea;
    quickSettings._indicators.add_child(indicator);
    quickSettings._addItems(indicator.quickSettingsItems);
}

