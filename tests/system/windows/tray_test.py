#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""velmora among trays that come and go, second starts, and peers that mean it no good."""

import os
import socket
import unittest

from stage import APPLICATION, MODEL, OBJECT, Gio, GLib, WindowTest, until, xdotool

PROPERTIES = "org.freedesktop.DBus.Properties"


class TrayTest(WindowTest):
    def run_velmora(self, *arguments):
        """A second one, which hands over its command before it ends."""
        self.assertEqual(self.start("velmora", *arguments).wait(), 0)

    def test_an_older_tray_shows_the_icon_too(self):
        settings = self.folder / "tint2rc"
        settings.write_text("panel_items = S\npanel_size = 100% 30\ndisable_transparency = 1\n")
        self.start("/usr/bin/tint2", "-c", settings)
        self.start_velmora()
        icon = until(lambda: xdotool("search", "--onlyvisible", "--classname", "^velmora$"), "the icon has docked")
        xdotool("mousemove", "--window", icon, 8, 8, "click", 1)
        until(self.panel, "the panel is open")

    def test_a_second_start_opens_the_panel_where_no_icon_does(self):
        self.start_velmora()
        self.run_velmora()
        self.await_focus()
        xdotool("key", "Escape")
        self.await_closed()
        self.start_tray()
        self.icon()
        self.run_velmora()
        self.assertEqual(self.velmora.children(), [])
        self.run_velmora("--panel")
        until(self.panel, "the panel is open")
        self.run_velmora("--quit")
        self.assertEqual(self.velmora.wait(), 0)
        until(lambda: not self.windows_program(), "the windows are gone")

    def test_a_peer_that_asks_and_never_reads_costs_nothing(self):
        self.start_all()
        self.icon()
        deaf = socket.socket(socket.AF_UNIX)
        self.addCleanup(deaf.close)
        deaf.settimeout(40)
        deaf.connect(str(self.folder / "session"))
        deaf.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\nBEGIN\r\n")
        bus = "org.freedesktop.DBus"
        calls = [message(bus, "/org/freedesktop/DBus", bus, "Hello"),
                 message(bus, "/org/freedesktop/DBus", bus, "AddMatch", "(s)", "type='signal'")]
        calls += [message(APPLICATION, OBJECT, PROPERTIES, "GetAll", "(s)", MODEL)] * 3000
        for call in calls:
            deaf.sendall(call)
        for limit in range(2000):
            value = GLib.Variant("d", 50 + limit % 2)
            self.call(APPLICATION, OBJECT, PROPERTIES, "Set", GLib.Variant("(ssv)", (MODEL, "customChargeLimit", value)))
        self.assertLess(self.velmora.memory(), 16 * 1024)
        self.open_panel()


def message(name, path, interface, method, types=None, *arguments):
    made = Gio.DBusMessage.new_method_call(name, path, interface, method)
    made.set_serial(1)
    if types:
        made.set_body(GLib.Variant(types, arguments))
    return bytes(made.to_blob(Gio.DBusCapabilityFlags.NONE))


if __name__ == "__main__":
    unittest.main(verbosity=2)
