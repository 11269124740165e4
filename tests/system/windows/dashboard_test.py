#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""The dashboard as a person uses it, page by page."""

import json
import os
import shutil
import subprocess
import unittest
from pathlib import Path

from stage import BIN, WindowTest, children, has, rectangle, until, xdotool

LINKS = ["Overview", "Health Trends", "Thermal History", "Ecosystem Sync", "Thresholds", "Notifications"]
PAST = ["Day", "Week", "Month", "All", "Export CSV", "Export PNG"]
# Each page's heading, and what can be used there.
PAGES = {
    "Overview": ("System Intelligence", []),
    "Health Trends": ("Health Trends", [*PAST, "Battery health"]),
    "Thermal History": ("Thermal History", [*PAST, "Thermal history"]),
    "Ecosystem Sync": ("Ecosystem Sync", ["Begin", "No provider is set: choose one …"]),
    "Thresholds": ("Thresholds", ["Auto-Protect", "Charge limit", "Hysteresis", "Storage mode", "Quick Charge to 100%",
                                  "Small widget at log-in", "Show small widget"]),  # without scrolling
    "Notifications": ("Notifications", ["Charge limit", "Power source", "Heat", "Charge cycles", "Low battery",
                                        "Low-battery threshold", "Look for journeys in the calendar"]),
}
# Without a server it is disabled, which only newer versions of Qt tell.
DISABLED = {"Send a test notice"}


class DashboardTest(WindowTest):
    title = "Velmora Dashboard"

    def open_dashboard(self, page):
        self.start_all()
        self.assertEqual(self.start("velmora", "--dashboard").wait(), 0)
        self.open_page(page)

    def open_page(self, page):
        self.press("radio button", page)
        self.widget("heading", PAGES[page][0])

    def start_all(self, level=30):
        """With a past."""
        super().start_all(level, past=subprocess.check_output([BIN / "velmora-past", "--laptop", "thresholds"]))

    def setting(self, name):
        """As the daemon has written it for this user; nothing while that is the default."""
        state = json.loads((Path(os.environ["STATE_DIRECTORY"]) / "settings.json").read_text())
        return state["users"].get(str(os.getuid()), {}).get(name)

    def test_every_page_by_its_link_and_every_control_by_its_name(self):
        self.open_dashboard("Overview")
        for page, (_, controls) in PAGES.items():
            self.open_page(page)
            usable = [one.get_name() for one in everything(self.window(self.title))
                      if has("SHOWING", one) and has("FOCUSABLE", one) and one.get_role_name() != "label"]
            expected = [*LINKS, "Width of the sidebar", *controls]
            self.assertCountEqual([name for name in usable if name not in DISABLED], expected, page)

    @unittest.skipUnless(shutil.which("dunstctl"), "dunst is not installed")
    def test_a_test_notice_is_shown_and_a_click_on_it_opens_the_panel(self):
        self.open_dashboard("Notifications")
        self.widget("label", "Nothing on this desktop shows notices.")
        dunst = self.start("/usr/bin/dunst", "-conf", os.devnull, "-print")
        self.widget("label", "Notices are shown by dunst.")
        self.press("button", "Send a test notice")
        dunst.says("^\tbody: 'This is how Velmora's notices look.'")
        self.widget("label", "Sent.")
        subprocess.run(["dunstctl", "action"], check=True)
        until(self.panel, "the panel is open")

    def test_thresholds_reach_the_charger(self):
        self.open_dashboard("Thresholds")
        self.await_charger(78, 80)
        for part, limit in (0, 50), (1, 100), (0.5, 75):
            self.slide("Charge limit", part)
            self.await_charger(limit - 2, limit)
        for key, limit in ("Left", 74), ("Right", 75):
            xdotool("key", key)
            self.await_charger(limit - 2, limit)
        self.slide("Hysteresis", 0.5)
        self.await_charger(65, 75)
        xdotool("key", "Right")
        self.await_charger(64, 75)
        for role, name, start, end in [("check box", "Storage mode", 39, 50), ("check box", "Storage mode", 64, 75),
                                       ("check box", "Auto-Protect", 95, 100), ("check box", "Auto-Protect", 64, 75),
                                       ("button", "Quick Charge to 100%", 99, 100),
                                       ("button", "Stop Quick Charge", 64, 75)]:
            self.press(role, name)
            self.await_charger(start, end)
        until(lambda: self.widget("slider", "Charge limit").get_description() == "In force: the charger stops at 75%.",
              "the page knows what the charger holds")

    def test_notices_are_chosen(self):
        self.open_dashboard("Notifications")
        for name, key in [("Charge limit", "notifyOnLimit"), ("Power source", "notifyOnPowerChange"),
                          ("Heat", "notifyOnHeat"), ("Charge cycles", "notifyOnCycle")]:
            wanted = not self.model(key)
            self.press("check box", name)
            until(lambda: self.setting(key) == wanted, f"the daemon keeps {key}")
            until(lambda: has("CHECKED", self.widget("check box", name)) == wanted, f"{name}: {wanted}")
        self.slide("Low-battery threshold", 1)
        until(lambda: self.setting("lowBatteryLimit") == 50, "50 %")
        xdotool("key", "Left")
        until(lambda: self.setting("lowBatteryLimit") == 49, "49 %")
        self.press("check box", "Low battery")
        until(lambda: not self.model("notifyOnLowBattery"), "no notice")

    def test_the_past_is_read_and_taken_away(self):
        self.open_dashboard("Health Trends")
        for page, chart in ("Health Trends", "Battery health"), ("Thermal History", "Thermal history"):
            self.open_page(page)
            told = lambda: self.widget("chart", chart).get_description()
            counts = []
            for reach in "All", "Month", "Week":
                self.press("radio button", reach)
                until(lambda: has("CHECKED", self.widget("radio button", reach)), reach)
                counts.append(int(told().split(" samples")[0]))
            self.assertEqual(sorted(set(counts), reverse=True), counts)
            xdotool("key", "Right", "Right")
            until(lambda: int(told().split(" samples")[0]) == max(counts), "the arrow keys go back to all")
            self.press("button", "Export CSV")
            table = self.saved(".csv").read_text().splitlines()
            self.assertEqual(len(table) - 1, max(counts))
            self.press("button", "Export PNG")
            self.assertEqual(self.saved(".png").read_bytes()[:4], b"\x89PNG")
            self.click(*middle(self.widget("chart", chart)))
            until(lambda: "% health" in told(), "the sample under the pointer is read out")

    def saved(self, kind):
        """Waits for the words that say where."""
        notice = until(lambda: self.widget("label", "Saved as "), "it is saved")
        return Path(until(lambda: notice.get_name().endswith(kind) and notice.get_name(), kind)[len("Saved as "):])


def everything(widget):
    yield widget
    for child in children(widget):
        yield from everything(child)


def middle(widget):
    x, y, width, height = rectangle(widget)
    return x + width // 2, y + height // 2


if __name__ == "__main__":
    unittest.main(verbosity=2)
