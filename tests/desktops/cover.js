// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// Somebody else's window, red and as large as the desktop lets it be.
imports.gi.versions.Gtk = '4.0';
imports.gi.versions.Gdk = '4.0';
const {Gdk, Gtk} = imports.gi;

const app = new Gtk.Application({application_id: 'test.velmora.Cover'});
app.connect('activate', () => {
    const style = new Gtk.CssProvider();
    style.load_from_data('window, headerbar { background: #ff0000; }', -1);
    Gtk.StyleContext.add_provider_for_display(Gdk.Display.get_default(), style, 800);
    const window = new Gtk.ApplicationWindow({application: app});
    window.maximize();
    window.present();
});
app.run([]);
