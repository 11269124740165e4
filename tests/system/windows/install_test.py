#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""The first start on a machine whose daemon is not installed, and the way there."""

import unittest

from stage import WindowTest, seek, until

QUESTION, BUTTON = "System Installation Required", "Grant Access & Install"


class InstallTest(WindowTest):
    title = "Velmora Dashboard"

    def start_fresh(self, *course):
        """`course`: what the user answers when asked for leave, and how soon."""
        self.start_all(manager=course)
        self.open_dashboard()
        self.widget("heading", QUESTION)

    def open_dashboard(self):
        self.assertEqual(self.start("velmora", "--dashboard").wait(), 0)

    def await_dashboard(self):
        self.widget("heading", "System Intelligence")
        self.assertIsNone(seek(self.window(self.title), "heading", QUESTION))

    def test_granted_it_shows_the_dashboard_and_asks_never_again(self):
        self.start_fresh("--prompt", 1)
        self.press("button", BUTTON)
        self.widget("progress bar", "Installing background services...")
        self.await_dashboard()
        self.await_charger(78, 80)
        self.assertEqual(self.start("velmora", "--quit").wait(), 0)
        self.assertEqual(self.velmora.wait(), 0)
        until(lambda: not self.windows_program(), "the windows are gone")
        self.start_velmora()
        self.open_dashboard()
        self.await_dashboard()


if __name__ == "__main__":
    unittest.main(verbosity=2)
