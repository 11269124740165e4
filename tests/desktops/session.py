# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""A desktop as a person logs in to it, nested in a window that fills a virtual display: two buses, the compositor, its
bar, a simulated laptop with its daemon, and the pointer and eyes of whoever sits before it."""

import os
import re
import shutil
import subprocess
import time
from pathlib import Path

PATIENCE = int(os.environ.get("PATIENCE", 60))  # seconds; software rendering is slow to start
PROJECT = Path(__file__).resolve().parents[2]
BIN = Path(os.environ.get("VELMORA_BIN", PROJECT / "build/bin"))
EXTENSION = "velmora@velmora.app"
WIDTH, HEIGHT = 1280, 800
BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>{0}</type><listen>unix:path={1}/{0}</listen><auth>EXTERNAL</auth>{2}
<policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy></busconfig>"""


def until(condition, what, patience=PATIENCE):
    """What `condition` gives, once that is something."""
    deadline = time.monotonic() + patience
    while time.monotonic() < deadline:
        if result := condition():
            return result
        time.sleep(0.1)
    raise AssertionError(f"not within {patience} s: {what}")


def output(*command, **environment):
    return subprocess.run([*map(str, command)], capture_output=True, text=True, check=False,
                          env=os.environ | environment).stdout.strip()


class Session:
    """`desktop` is one of the functions below: it starts what belongs to it."""

    def __init__(self, desktop):
        self.folder = Path(os.environ["XDG_RUNTIME_DIR"])
        self.programs = []
        for variable in "CONFIG", "DATA", "STATE":
            path = self.folder / variable.lower()
            path.mkdir()
            os.environ[f"XDG_{variable}_HOME"] = str(path)
        os.environ.update(GSETTINGS_BACKEND="keyfile", XDG_SESSION_TYPE="wayland", QT_QUICK_BACKEND="software",
                          LIBGL_ALWAYS_SOFTWARE="1", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", VELMORA_LOG="stderr",
                          VELMORA_SYSFS=str(self.folder / "sys"), STATE_DIRECTORY=str(self.folder / "state"),
                          XDG_DATA_DIRS=f"{PROJECT}/build/share:/usr/local/share:/usr/share")
        (self.folder / "data/applications").mkdir()
        for entry in (PROJECT / "packaging").glob("*Velmora.desktop"):
            (self.folder / "data/applications" / entry.name).symlink_to(entry)
        self.start_bus("system", "")
        self.outer = ":81"
        self.start("Xvfb", self.outer, "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-nolisten", "tcp", "-ac")
        until(Path("/tmp/.X11-unix/X81").exists, "there is a display")
        os.environ["DISPLAY"] = self.outer
        desktop(self)
        self.start_laptop()

    def start(self, *command, **environment):
        name = Path(str(command[0])).name
        with open(self.folder / f"{name}.log", "ab") as log:
            program = subprocess.Popen([*map(str, command)], stdin=subprocess.PIPE, stdout=log, stderr=log,
                                       env=os.environ | environment)
        self.programs.append(program)
        return program

    def start_bus(self, kind, services):
        settings = self.folder / f"{kind}.conf"
        settings.write_text(BUS.format(kind, self.folder, services))
        self.start("dbus-daemon", f"--config-file={settings}", "--nofork")
        os.environ[f"DBUS_{kind.upper()}_BUS_ADDRESS"] = f"unix:path={self.folder}/{kind}"
        until((self.folder / kind).exists, f"there is a {kind} bus")

    def start_session_bus(self):
        """What it starts has the environment of now."""
        self.start_bus("session", "<standard_session_servicedirs/>")

    def await_wayland(self, socket):
        until((self.folder / socket).exists, "the compositor answers")
        os.environ["WAYLAND_DISPLAY"] = socket

    def use_inner_x(self, cookie=""):
        """The compositor's own X server, on which Velmora may show its windows; some start it for the first of them."""
        sockets = lambda: sorted(set(os.listdir("/tmp/.X11-unix")) - {f"X{self.outer[1:]}"})
        os.environ["DISPLAY"] = until(sockets, "the compositor has an X server")[0].replace("X", ":")
        if cookie:
            os.environ["XAUTHORITY"] = str(until(lambda: list(self.folder.glob(cookie)), "there is a cookie for it")[0])

    def start_laptop(self):
        self.laptop = self.start(BIN / "velmora-laptop", "--into", self.folder / "sys", "--laptop", "thresholds", "--level",
                                 "80", "--speed", "1", "--plain")
        until((self.folder / "sys/class/power_supply/BAT0/capacity").exists, "there is a laptop")
        self.start(BIN / "velmorad")
        until(lambda: "app.velmora.daemon" in output("busctl", f"--address={os.environ['DBUS_SYSTEM_BUS_ADDRESS']}",
                                                     "list", "--acquired"), "the daemon serves")

    def order(self, words):
        self.laptop.stdin.write(f"{words}\n".encode())
        self.laptop.stdin.flush()

    def end(self):
        for program in reversed(self.programs):
            program.terminate()

    # -- What a person does and sees, on the outer display

    def point(self, x, y, *orders):
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "sleep", "0.3", *map(str, orders)], check=True,
                       env=os.environ | {"DISPLAY": self.outer})

    def press(self, key):
        subprocess.run(["xdotool", "key", key], check=True, env=os.environ | {"DISPLAY": self.outer})

    def picture(self, path):
        subprocess.run(["import", "-silent", "-window", "root", str(path)], check=True,
                       env=os.environ | {"DISPLAY": self.outer})
        return path


def kde(session):
    os.environ.update(XDG_CURRENT_DESKTOP="KDE", KDE_FULL_SESSION="true", KDE_SESSION_VERSION="5", KWIN_COMPOSE="Q")
    if shutil.which("kbuildsycoca6"):
        os.environ["KDE_SESSION_VERSION"] = "6"
    session.start_session_bus()
    kwin = Path("/tmp/kwin_wayland")  # a copy has no file capabilities, with which it would not start here
    shutil.copy("/usr/bin/kwin_wayland", kwin)
    session.start(kwin, "--x11-display", session.outer, "--width", WIDTH, "--height", HEIGHT, "--xwayland",
                  "--no-lockscreen", "--socket", "wayland-kde")
    session.await_wayland("wayland-kde")
    session.use_inner_x()
    session.start(shutil.which("kded6") or "kded5", QT_QPA_PLATFORM="wayland")  # where icons register
    session.start("plasmashell", "--no-respawn", QT_QPA_PLATFORM="wayland")
    session.start("/usr/libexec/xdg-desktop-portal")


def gnome(session, *extensions):
    os.environ.update(XDG_CURRENT_DESKTOP="GNOME", MUTTER_DEBUG_DUMMY_MODE_SPECS=f"{WIDTH}x{HEIGHT}")
    session.start_session_bus()
    version = int(re.search(r"\d+", output("gnome-shell", "--version"))[0])
    folder = session.folder / "data/gnome-shell/extensions"
    folder.mkdir(parents=True)
    (folder / EXTENSION).symlink_to(PROJECT / f"build/gnome-shell/{43 if version < 45 else 45}" / EXTENSION)
    output("gsettings", "set", "org.gnome.shell", "enabled-extensions", str(list(extensions)))
    output("gsettings", "set", "org.gnome.desktop.notifications", "show-banners", "false")
    output("gsettings", "set", "org.gnome.shell", "welcome-dialog-last-shown-version", "999")
    session.start("gnome-shell", "--nested", "--wayland", "--wayland-display=wayland-gnome", "--unsafe-mode")
    session.await_wayland("wayland-gnome")
    session.use_inner_x(".mutter-Xwaylandauth.*")
    until(lambda: "'false'" in shell("Main.overview.hide(); Main.layoutManager._startingUp || Main.overview.visible"),
          "the shell shows an empty desktop")


def shell(code):
    """What GNOME Shell makes of it: whether it could, and its answer in JSON."""
    return output("gdbus", "call", "--session", "-d", "org.gnome.Shell", "-o", "/org/gnome/Shell", "-m",
                  "org.gnome.Shell.Eval", code)


def sway(session):
    os.environ.update(XDG_CURRENT_DESKTOP="sway", WLR_BACKENDS="x11", WLR_RENDERER="pixman", WLR_X11_OUTPUTS="1")
    session.start_session_bus()
    told = session.folder / "sway.told"
    settings = session.folder / "sway.conf"
    settings.write_text(f"xwayland enable\nworkspace_layout tabbed\noutput * mode {WIDTH}x{HEIGHT}\noutput * bg #336699 solid_color\n"
                        f"exec sh -c 'echo $WAYLAND_DISPLAY $DISPLAY $SWAYSOCK >{told}'\n")
    session.start("sway", "--unsupported-gpu", "-c", settings)
    words = until(lambda: told.exists() and told.read_text().split(), "sway is up")
    os.environ.update(zip(("WAYLAND_DISPLAY", "DISPLAY", "SWAYSOCK"), words))
    bar = session.folder / "waybar.json"
    bar.write_text('{"layer": "top", "modules-left": ["sway/workspaces"], "modules-right": ["tray"]}')
    session.start("waybar", "-c", bar)
