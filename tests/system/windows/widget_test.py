#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""The desktop widgets as a person places, pins and closes them, and finds them again."""

import re
import shutil
import unittest

from stage import APPLICATION, GLib, WindowTest, has, rectangle, until, xdotool


class WidgetTest(WindowTest):
    title = "Velmora Small Widget"

    def setUp(self):
        shutil.rmtree(self.folder / "velmora", ignore_errors=True)  # nothing is remembered

    def show(self, *option):
        self.assertEqual(self.start("velmora", *option).wait(), 0)

    def place(self):
        return rectangle(self.widget("button", "Battery, "))

    def set(self, size, **properties):
        for name, value in properties.items():
            self.call(APPLICATION, f"/app/velmora/widgets/{size}", "org.freedesktop.DBus.Properties", "Set",
                      GLib.Variant("(ssv)", ("app.velmora.Widget", name, value)))

    def drag(self):
        """To the left and down, for as long as it takes the window manager to take hold of it."""
        x, y, width, height = self.place()
        xdotool("mousemove", x + width // 2, y + height // 2, "mousedown", 1)
        until(lambda: xdotool("mousemove_relative", "--", -9, 7) or self.held_at() < x - 50, "it goes with the pointer")
        xdotool("mouseup", 1)
        until(lambda: self.place()[0] == self.held_at(), "it knows where it came to rest")

    def held_at(self):
        """Its left edge as the display has it; the window itself is told once it is let go."""
        found = xdotool("search", "--name", self.title, "getwindowgeometry", "--shell")
        return int(re.search("^X=(-?[0-9]+)$", found, re.MULTILINE)[1])

    def test_it_stays_where_it_was_put(self):
        self.start_all()
        self.show("--widget", "small")
        self.drag()
        self.drag()
        place = self.place()
        xdotool("key", "Down", "Down")
        until(lambda: self.place()[1] == place[1] + 16, "keys move it too")
        xdotool("key", "Escape", "alt+F4")
        self.await_closed()
        self.show("--widget", "small")
        self.assertEqual(self.place(), (place[0], place[1] + 16, *place[2:]))

    def test_those_that_are_wished_at_log_in_are_there_and_leave_the_focus(self):
        self.start_velmora()
        for size in "small", "medium":
            self.set(size, isShownAtLogIn=GLib.Variant("b", True))
        self.velmora.end()
        self.start_velmora("--dashboard")
        widgets = [f"Velmora {size} Widget" for size in ("Small", "Medium")]
        for title in widgets:
            until(lambda: has("SHOWING", self.window(title)), f"{title} is there")
        until(lambda: has("ACTIVE", self.window("Velmora Dashboard")), "the dashboard has the focus")
        xdotool("key", "alt+F4")
        until(lambda: not self.window("Velmora Dashboard"), "what is typed goes to the dashboard")
        for size, title in zip(("small", "medium"), widgets):
            self.show("--widget", size)
            until(lambda: has("ACTIVE", self.window(title)), f"{title} has the focus, now that it was asked for")


if __name__ == "__main__":
    unittest.main(verbosity=2)
