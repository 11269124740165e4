# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""A desktop for one test program alone and a person before it: two buses, a virtual display with a window manager, the
built programs, a pointer, and the eyes of a screen reader. Nothing outside is touched, nothing stays behind."""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

AT_SPI = "/usr/libexec/at-spi-bus-launcher"
needed = AT_SPI, "Xvfb", "dbus-daemon", "openbox", "setpriv", "tint2", "xdotool"
missing = [program for program in needed if not shutil.which(program)]
try:
    import gi

    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, Gio, GLib
except (ImportError, ValueError) as reason:
    missing.append(str(reason))
if missing:
    print("skipped, since there is no", ", no ".join(missing))
    sys.exit(77)

PATIENCE = 40  # seconds; only a test that fails waits that long
BIN = Path(os.environ["VELMORA_BIN"])
APPLICATION, WINDOWS = "app.velmora.Velmora", "app.velmora.Windows"
OBJECT, MODEL = "/app/velmora/Velmora", "app.velmora.Model"
BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>{0}</type><listen>unix:path={1}/{0}</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy></busconfig>"""


def until(condition, what):
    """What `condition` gives, once that is something."""
    deadline = time.monotonic() + PATIENCE
    while time.monotonic() < deadline:
        try:
            if result := condition():
                return result
        except (GLib.Error, FileNotFoundError):
            pass  # it went while we looked
        time.sleep(0.02)
    raise AssertionError(f"not within {PATIENCE} s: {what}")


def xdotool(*orders):
    return subprocess.run(["xdotool", *map(str, orders)], capture_output=True, text=True, check=False).stdout.strip()


class Program:
    """One that runs until `end`, or until this test program ends, however it does."""

    started = 0

    def __init__(self, folder, *command):
        Program.started += 1
        self.output = folder / f"{Path(command[0]).name}.{Program.started}"
        with open(self.output, "wb") as output, open(folder / "log", "ab") as log:
            self.process = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", "--", *map(str, command)],
                                            stdin=subprocess.DEVNULL, stdout=output, stderr=log)
        self.files = Path(f"/proc/{self.process.pid}")

    def says(self, pattern):
        """Waits for a line like that; the last one."""
        lines = lambda: list(re.finditer(pattern, self.output.read_text(), re.MULTILINE))
        return until(lines, f"{self.output.name} says {pattern}")[-1]

    def children(self):
        return (self.files / f"task/{self.process.pid}/children").read_text().split()

    def memory(self):
        """Resident, in KiB."""
        return int(re.search(r"VmRSS:\s+(\d+)", (self.files / "status").read_text())[1])

    def wait(self):
        return self.process.wait(PATIENCE)

    def end(self):
        self.process.terminate()
        try:
            self.wait()
        finally:
            self.process.kill()


class WindowTest(unittest.TestCase):
    """Its methods are what a person does and sees."""

    title = "Velmora"  # of the window that is looked at

    # -- The stage, for all tests of a file

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="velmora-windows-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        for variable in "WAYLAND_DISPLAY", "XAUTHORITY", "QT_QPA_PLATFORM", "AT_SPI_BUS_ADDRESS":
            os.environ.pop(variable, None)
        for variable in "HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR":
            os.environ[variable] = str(cls.folder)
        os.environ.update(GSETTINGS_BACKEND="memory", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", VELMORA_LOG="stderr",
                          VELMORA_SYSFS=str(cls.folder / "sys"))
        for kind in "system", "session":
            (cls.folder / f"{kind}.conf").write_text(BUS.format(kind, cls.folder))
            bus = cls.prop("dbus-daemon", f"--config-file={cls.folder}/{kind}.conf", "--nofork", "--print-address")
            os.environ[f"DBUS_{kind.upper()}_BUS_ADDRESS"] = bus.says(r"^(\S+)\n")[1]
        screen = cls.prop("Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-ac")
        os.environ["DISPLAY"] = ":" + screen.says(r"^(\d+)\n")[1]
        kinds = Gio.DBusConnectionFlags
        cls.bus = Gio.DBusConnection.new_for_address_sync(os.environ["DBUS_SESSION_BUS_ADDRESS"],
                                                          kinds.AUTHENTICATION_CLIENT | kinds.MESSAGE_BUS_CONNECTION)
        cls.prop(AT_SPI, "--launch-immediately")
        until(lambda: cls.owner("org.a11y.Bus"), "there is a bus for screen readers")
        cls.prop("openbox", "--sm-disable", "--startup", "echo ready").says("^ready")

    @classmethod
    def prop(cls, *command):
        program = Program(cls.folder, *command)
        cls.addClassCleanup(program.end)
        return program

    def run(self, result=None):
        log = self.folder / "log"
        before, failures = log.stat().st_size, len(result.failures + result.errors)
        super().run(result)
        if len(result.failures + result.errors) > failures:
            print("\n-- what the programs logged:", log.read_bytes()[before:].decode(), sep="\n")

    # -- The programs, for each test anew

    def start(self, program, *arguments):
        """One of ours by its name, any other by its path."""
        started = Program(self.folder, BIN / program, *arguments)
        self.addCleanup(started.end)
        return started

    def start_velmora(self, *arguments):
        self.velmora = self.start("velmora", *arguments)
        self.addCleanup(self.end_windows)
        until(lambda: self.owner(APPLICATION), "velmora is on the bus")

    def start_tray(self):
        self.tray = self.start("velmora-trayhost")

    def start_all(self, level=30, past=None, manager=("--enabled",)):
        """Over a laptop that charges a percent in a second; `past` is what the daemon remembers, `manager` how the
        stand-in of systemd's manager behaves."""
        os.environ["STATE_DIRECTORY"] = state = tempfile.mkdtemp(dir=self.folder)
        if past:
            (Path(state) / "history.json").write_bytes(past)
        self.start("velmora-laptop", "--into", self.folder / "sys", "--level", level, "--speed", 60).says("^ready")
        self.start("velmora-servicemanager", *manager, BIN / "velmorad").says("^ready")
        self.start_tray()
        self.start_velmora()

    def end_windows(self):
        if pid := self.windows_program():
            os.kill(pid, signal.SIGKILL)

    # -- What stands behind the windows

    @classmethod
    def call(cls, name, path, interface, method, arguments):
        return cls.bus.call_sync(name, path, interface, method, arguments, None, 0, 5000, None)

    @classmethod
    def owner(cls, name):
        """The process that owns the name on the session bus; 0 for none."""
        try:
            return cls.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                            "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)))[0]
        except GLib.Error:
            return 0

    def windows_program(self):
        return self.owner(WINDOWS)

    def model(self, name):
        """A property of the model."""
        return self.call(APPLICATION, OBJECT, "org.freedesktop.DBus.Properties", "Get",
                         GLib.Variant("(ss)", (MODEL, name)))[0]

    def battery(self, attribute):
        return (self.folder / "sys/class/power_supply/BAT0" / attribute).read_text().strip()

    def await_charger(self, start, end):
        held = lambda: [self.battery(f"charge_control_{which}_threshold") for which in ("start", "end")]
        until(lambda: held() == [str(start), str(end)], f"the charger holds {start} to {end}")

    # -- What a person sees

    def window(self, title):
        """Nothing where there is none."""
        pid = self.windows_program()
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        for program in children(desktop) if pid else ():
            if program.get_process_id() == pid:
                program.clear_cache()
                return next((frame for frame in children(program) if frame.get_name() == title), None)
        return None

    def panel(self):
        return self.window("Velmora")

    def widget(self, role, name):
        """Waits for it in the window that is looked at, and until it stands still."""
        place = None

        def look():
            nonlocal place
            found = (window := self.window(self.title)) and seek(window, role, name)
            earlier, place = place, found and rectangle(found)
            return found if place and place == earlier else None

        return until(look, f'"{self.title}" shows the {role} "{name}"')

    def icon(self):
        """Waits for its place, and for the bar to be on the screen. By then it has been asked for its tooltip, and
        knows that it is shown."""
        self.tray.says("^ready")
        place = self.tray.says(r"^item at (\d+),(\d+): ")
        self.tray.says("^tooltip: ")
        return int(place[1]), int(place[2])

    def await_focus(self):
        until(lambda: has("ACTIVE", self.panel()), "the panel has the focus")

    def has_closed(self):
        return not self.windows_program() and not self.velmora.children()

    def await_closed(self):
        until(self.has_closed, "the windows' program has ended")

    # -- What a person does

    def click(self, x, y):
        xdotool("mousemove", x, y, "click", 1)

    def press(self, role, name):
        x, y, width, height = rectangle(self.widget(role, name))
        self.click(x + width // 2, y + height // 2)

    def slide(self, name, part):
        """Presses a slider's groove at that part of its length."""
        x, y, width, height = rectangle(self.widget("slider", name))
        self.click(x + 9 + round(part * (width - 18)), y + height // 2)

    def click_icon(self):
        self.click(*self.icon())

    def open_panel(self):
        self.click_icon()
        return until(self.panel, "the panel is open")


def children(widget):
    return filter(None, map(widget.get_child_at_index, range(widget.get_child_count())))


def role_of(widget):
    """In the words of at-spi 2.53; before, a button was a push button."""
    return widget.get_role_name().removeprefix("push ")


def seek(root, role, name):
    """The first widget with that role, and a name that begins so, which is shown."""
    if role_of(root) == role and root.get_name().startswith(name):
        return root if has("SHOWING", root) else None
    return next(filter(None, (seek(child, role, name) for child in children(root))), None)


def has(state, widget):
    return widget and widget.get_state_set().contains(getattr(Atspi.StateType, state))


def rectangle(widget):
    """On the screen; nothing for what has no size."""
    place = widget.get_extents(Atspi.CoordType.SCREEN)
    return (place.x, place.y, place.width, place.height) if place.width > 0 and place.height > 0 else None
