#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""The panel as a person uses it, over a laptop that charges fast."""

import os
import signal
import unittest

from stage import WindowTest, has, rectangle, until, xdotool


class PanelTest(WindowTest):
    def await_switch(self, name, is_on):
        until(lambda: has("CHECKED", self.widget("check box", name)) == is_on, f"{name}: {is_on}")

    def test_a_chosen_limit_reaches_the_charger_each_time(self):
        self.start_all(level=20)
        x, y, width, _ = rectangle(self.open_panel())
        icon = self.icon()
        self.assertTrue(x <= icon[0] <= x + width <= 1280 and icon[1] < y < icon[1] + 64, "it opens at the icon")
        for limit in [90, 80] * 10:
            self.press("button", "Settings")
            self.press("menu item", f"Limit to {limit}%")
            self.await_charger(limit - 2, limit)
            until(lambda: self.widget("check box", "Auto-Protect").get_description() == f"Limit to {limit}% charge",
                  "the caption follows")
        self.assertEqual(self.battery("status"), "Charging")

    def test_it_closes_and_its_program_ends(self):
        self.start_all()
        def click_outside():
            # Again, should openbox have dealt with the first before the panel's wish for the focus.
            until(lambda: self.click(300, 600) or self.has_closed(), "a click elsewhere closes it")

        for close in [lambda: xdotool("key", "Escape"), click_outside, self.click_icon]:
            self.open_panel()
            self.await_focus()
            close()
            self.await_closed()
        self.assertIsNone(self.velmora.process.poll())

    def test_a_program_that_dies_or_hangs_is_replaced_at_the_next_click(self):
        self.start_all()
        self.open_panel()
        for fate in signal.SIGKILL, signal.SIGSTOP:
            pid = self.windows_program()
            os.kill(pid, fate)
            if fate == signal.SIGKILL:
                self.await_closed()
            self.click_icon()
            until(lambda: self.windows_program() not in (0, pid) and self.panel(), f"another one after {fate.name}")
        self.press("check box", "Demo Simulation")
        self.await_switch("Demo Simulation", True)

    def test_the_power_button_ends_all(self):
        self.start_all()
        self.open_panel()
        self.press("button", "Quit Velmora")
        self.assertEqual(self.velmora.wait(), 0)
        until(lambda: not self.windows_program(), "the windows are gone")

    def test_without_a_daemon_it_shows_what_the_model_begins_with(self):
        self.start_tray()
        self.start_velmora()
        self.open_panel()
        self.widget("label", "50%")


if __name__ == "__main__":
    unittest.main(verbosity=2)
