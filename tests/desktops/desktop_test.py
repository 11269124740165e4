#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""Velmora on one desktop, whose name is the first argument: what a person would see, told from pictures of the screen.
Run by ./run, inside of a tree that has the desktops."""

import re
import sys
import time
import unittest
from dataclasses import dataclass
from pathlib import Path
from typing import Callable

import session
from session import BIN, HEIGHT, WIDTH, Session, output, until

PICTURES = Path("/pictures")
PANEL = 320, 450
LAUNCH = 60, -30  # "Launch Dashboard", from the panel's lower left corner


@dataclass
class Desktop:
    start: Callable
    turn_dark: tuple
    has_icon: bool = True
    clicks: int = 1             # that open the panel
    opens: str = "icon"         # or in the "corner" at the top right, or "anywhere": the bar cannot say where it is
    raises: bool = True         # what asks for the focus; else it is only marked
    server: str = "gnome-shell" # that shows notices; nothing where none does
    contrast: float = 0.35      # of the icon to the bar, at least; 0 to 1


# Plasma keeps notices to itself as long as who asks for that is there.
INHIBIT = """const {Gio, GLib} = imports.gi, name = 'org.freedesktop.Notifications';
Gio.DBus.session.call_sync(name, '/org/freedesktop/Notifications', name, 'Inhibit',
    new GLib.Variant('(ssa{sv})', ['app.velmora.Velmora', 'test', {}]), null, 0, -1, null);
new GLib.MainLoop(null, false).run();"""
GNOME_DARK = "gsettings", "set", "org.gnome.desktop.interface", "color-scheme", "prefer-dark"
APPINDICATOR = "ubuntu-appindicators@ubuntu.com"
DESKTOPS = {
    # Plasma 6 keeps its bar light here, and turns all that is on it white.
    "kde": Desktop(session.kde, ("plasma-apply-colorscheme", "BreezeDark"), server="Plasma", contrast=0.15),
    "gnome": Desktop(lambda it: session.gnome(it), GNOME_DARK, has_icon=False, opens="corner"),
    "gnome-extension": Desktop(lambda it: session.gnome(it, session.EXTENSION), GNOME_DARK, has_icon=False,
                               opens="corner"),
    "gnome-appindicator": Desktop(lambda it: session.gnome(it, APPINDICATOR), GNOME_DARK, clicks=2),
    # Debian 12 has no LayerShellQt for Qt 6: there sway places the panel; waybar draws the icon in the file's grey.
    "sway": Desktop(session.sway, GNOME_DARK, opens="anywhere", raises=False, server="",
                    contrast=0.05),
}


@dataclass
class Box:
    x: int
    y: int
    width: int
    height: int

    def centre(self):
        return self.x + self.width // 2, self.y + self.height // 2


BAR = 48  # pixels at the top and at the bottom that may be a bar, in which clocks and lists of windows change


def difference(one, other, margin=0):
    """The box around what differs between two pictures, but for such a margin above and below; nothing where they are
    the same."""
    inner = "-crop", f"{WIDTH}x{HEIGHT - 2 * margin}+0+{margin}", "+repage"
    border = "-bordercolor", "black", "-border", "1"  # what is trimmed has the colour of the corners
    told = output("convert", "(", one, *inner, ")", "(", other, *inner, ")", "-compose", "difference", "-composite",
                  "-colorspace", "gray", "-threshold", "6%", *border, "-format", "%@ %[fx:maxima]", "info:")
    box, most = re.match(r"(\d+x\d+\+\d+\+\d+) (\S+)", told).groups()
    width, height, x, y = map(int, re.split(r"[x+]", box))
    return Box(x - 1, y - 1 + margin, width, height) if float(most) else None


def lightness(picture, box, statistic="mean"):
    """0 to 1."""
    return float(output("convert", picture, "-crop", f"{box.width}x{box.height}+{box.x}+{box.y}", "-colorspace", "gray",
                        "-format", f"%[fx:{statistic}]", "info:"))


def is_red(picture, box):
    """As the window of cover.js is."""
    return output("convert", picture, "-crop", f"{box.width}x{box.height}+{box.x}+{box.y}", "-scale", "1x1!", "-format",
                  "%[hex:p{0,0}]", "info:").startswith("FF0000")


class DesktopTest(unittest.TestCase):
    desktop: Desktop
    name: str
    panel = None  # where it was seen

    @classmethod
    def setUpClass(cls):
        cls.session = Session(cls.desktop.start)
        cls.addClassCleanup(cls.session.end)
        cls.session.start(BIN / "velmora")
        until(lambda: cls.model("percentage") == "d 80", "velmora serves")
        cls.icon = cls.find_icon() if cls.desktop.has_icon else None
        cls.picture("bar")

    @classmethod
    def picture(cls, what):
        return cls.session.picture(PICTURES / f"{cls.name}-{what}.png")

    @classmethod
    def model(cls, name):
        return output("busctl", "--user", "get-property", "app.velmora.Velmora", "/app/velmora/Velmora", "app.velmora.Model",
                      name)

    @classmethod
    def find_icon(cls):
        """Where the screen changes when nothing but the battery's level does, and changes back with it."""
        def shot(level, name):
            cls.session.order(f"level {level}")
            until(lambda: cls.model("percentage") == f"d {level}", "velmora shows the level")
            time.sleep(1.5)
            return cls.picture(name)

        def look():
            low, high, again = shot(4, "before"), shot(96, "now"), shot(4, "again")
            box = difference(low, high)
            again.rename(low)
            return box if box and box == difference(low, high) and box.width <= 32 and box.height <= 32 else None

        icon = until(look, "the tray shows the icon", 120)
        shot(80, "now")
        return icon

    def run(self, result=None):
        """With what the programs said, should it fail."""
        before = len(result.failures + result.errors)
        super().run(result)
        if len(result.failures + result.errors) > before:
            self.picture(f"failed-{self._testMethodName}")
            for name in "velmora", "gjs":
                log = self.session.folder / f"{name}.log"
                print(f"-- {name}:", log.read_text(errors="replace")[-1500:] if log.exists() else "nothing", sep="\n")

    # -- What a person does and sees

    def changed(self, before, is_meant):
        """Waits until the screen has changed from the picture in a way that is meant, and stands still; the box."""
        last = None

        def look():
            nonlocal last
            box = difference(before, self.picture("now"), BAR)
            settled, last = box == last, box
            return box if box and settled and is_meant(box) else None

        return until(look, "the screen shows what was asked for")

    def still(self):
        """A picture of the screen once nothing moves any more, the pointer out of the way."""
        self.session.point(WIDTH // 2, HEIGHT - 5)
        def look():
            one = self.picture("before")
            time.sleep(0.5)
            return one if not difference(one, self.picture("now"), BAR) else None

        return until(look, "nothing moves")

    def ui_programs(self):
        return output("pgrep", "-r", "DRS", "-x", "velmora-ui").split()

    def ask_for_panel(self):
        if self.icon:
            self.session.point(*self.icon.centre(), "click", "--repeat", self.desktop.clicks, "--delay", 60, 1)
        else:
            output(BIN / "velmora", "--panel")

    def open_panel(self):
        before = self.still()
        self.ask_for_panel()
        return self.changed(before, lambda box: box.width >= PANEL[0] - 4 and box.height >= PANEL[1] - 20)

    def close_panel(self):
        self.session.press("Escape")
        until(lambda: not self.ui_programs(), "the panel has closed and its program has ended")

    # -- What is so on every desktop

    def test_1_the_panel_opens_where_it_belongs_and_closes_on_escape(self):
        panel = type(self).panel = self.open_panel()
        self.picture("panel-light")
        self.assertLess(panel.width, PANEL[0] + 80)
        if self.desktop.opens == "icon":
            wanted = min(max(self.icon.centre()[0], PANEL[0] // 2), WIDTH - PANEL[0] // 2)
            self.assertAlmostEqual(panel.centre()[0], wanted, delta=24)
            self.assertLess(panel.height, PANEL[1] + 80)
        elif self.desktop.opens == "corner":
            self.assertGreater(panel.x + panel.width, WIDTH - 40)
            self.assertLess(panel.y, 80)
        self.close_panel()

    def test_2_dark_follows(self):
        panel = self.open_panel()
        inside = Box(panel.x + 20, panel.y + 60, 280, 300)
        self.assertGreater(lightness(self.picture("now"), inside), 0.45)
        output(*self.desktop.turn_dark)
        until(lambda: lightness(self.picture("now"), inside) < 0.4, "the open panel turns dark")
        time.sleep(1)
        shot = self.picture("panel-dark")
        if self.icon:
            contrast = lightness(shot, self.icon, "maxima") - lightness(shot, self.icon, "minima")
            self.assertGreater(contrast, self.desktop.contrast, "the icon can be told from the bar")
        self.close_panel()

    def test_0_quick_settings_of_gnome(self):
        if self.name != "gnome-extension":
            self.skipTest("there are none")
        menu = "Main.panel.statusArea.quickSettings.menu"
        toggle = f"{menu}._grid.get_children().find(one => one.constructor.name.includes('VelmoraToggle'))"
        session.shell(f"{menu}.open(); {toggle}.menu.open(); 1")
        time.sleep(2)
        self.picture("quick-settings")
        place = session.shell(f"{toggle}._limits[1].item.get_transformed_position()")
        x, y = map(float, re.findall(r"[\d.]+", place))
        self.session.point(round(x) + 40, round(y) + 10, "click", 1)
        until(lambda: self.model("customChargeLimit") == "d 90", "the limit is set")
        output("busctl", "--user", "set-property", "app.velmora.Velmora", "/app/velmora/Velmora", "app.velmora.Model",
               "customChargeLimit", "d", "80")
        session.shell(f"{menu}.close(); 1")

    def test_3_the_dashboard_comes_to_the_front(self):
        empty = self.still()
        output(BIN / "velmora", "--dashboard")
        self.changed(empty, lambda box: box.width > 800 and box.height > 500)
        self.picture("dashboard")
        cover = self.session.start("gjs", Path(__file__).with_name("cover.js"))
        self.addCleanup(cover.terminate)
        middle = Box(WIDTH // 2 - 50, HEIGHT // 2 - 50, 100, 100)
        until(lambda: is_red(self.picture("now"), middle), "another window covers it")
        self.ask_for_panel()
        panel = self.panel
        low = Box(panel.x + 100, panel.y + 320, 100, 80)  # no menu of the icon's reaches down there
        until(lambda: not is_red(self.picture("now"), low), "the panel is open")
        time.sleep(1)
        self.session.point(panel.x + LAUNCH[0], panel.y + panel.height + LAUNCH[1], "click", 1)
        if self.desktop.raises:
            until(lambda: not is_red(self.picture("now"), middle), "the dashboard is in front")

    def test_3_notices_are_shown_as_the_desktop_is_set(self):
        notices = lambda name: output("busctl", "--user", "get-property", "app.velmora.Velmora",
                                      "/app/velmora/NotificationManager", "app.velmora.NotificationManager", name)
        if not self.desktop.server:
            return self.assertEqual(notices("server"), 's ""')
        until(lambda: notices("server") == f's "{self.desktop.server}"', "velmora knows who shows notices")
        output("busctl", "--user", "call", "app.velmora.Velmora", "/app/velmora/NotificationManager",
               "app.velmora.NotificationManager", "sendTestNotice")
        until(lambda: notices("testResult") == 'as 1 ""', "the notice is taken")
        time.sleep(1)
        self.picture("notice")
        if self.name == "kde":
            inhibitor = self.session.start("gjs", "-c", INHIBIT)
            until(lambda: notices("isInhibited") == "b true", "do not disturb is on")
            inhibitor.kill()
            until(lambda: notices("isInhibited") == "b false", "do not disturb is off")

    def test_4_widgets_lie_where_they_were_left(self):
        output(BIN / "velmora", "--quit")
        until(lambda: not self.ui_programs(), "all windows are gone")
        self.session.start(BIN / "velmora")
        for size, x, y in ("small", 140, 180), ("medium", 420, 300):
            until(lambda: self.model("percentage"), "velmora serves")
            output("busctl", "--user", "set-property", "app.velmora.Velmora", f"/app/velmora/widgets/{size}",
                   "app.velmora.Widget", "place", "ai", "2", str(x), str(y))
            before = self.still()
            output(BIN / "velmora", "--widget", size)
            box = self.changed(before, lambda box: box.width > 100 and box.height > 100)
            self.assertLess(abs(box.x - x) + abs(box.y - y), 32)  # with layer-shell a bar at the top moves it down
        self.picture("widgets")

    def test_5_nothing_is_left(self):
        output(BIN / "velmora", "--quit")
        until(lambda: not output("pgrep", "-r", "DRS", "-x", "velmora|velmora-ui"), "velmora and its windows have ended")


if __name__ == "__main__":
    DesktopTest.name = sys.argv.pop(1)
    DesktopTest.desktop = DESKTOPS[DesktopTest.name]
    unittest.main(verbosity=2)
