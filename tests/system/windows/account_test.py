#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""The account as a person uses it, mostly by the keyboard, with a provider on the loopback and a stand-in of a browser."""

import os
import subprocess
import sys
import unittest

from stage import BIN, WindowTest, until, xdotool

# Shows the provider's page until its user agrees there.
BROWSER = """#!{python}
import pathlib, sys, time, urllib.request
folder = pathlib.Path({folder!r})
(folder / "page").touch()
while not (folder / "agreed").exists():
    if not (folder / "page").exists():
        sys.exit()
    time.sleep(0.02)
(folder / "shown").write_bytes(urllib.request.urlopen(sys.argv[1], timeout=20).read())
"""


class AccountTest(WindowTest):
    title = "Velmora Dashboard"

    def setUp(self):
        self.provider = self.start("velmora-scriptedprovider")
        self.issuer = self.provider.says(r"^(http\S+)$")[1]
        programs = self.folder / "bin"
        programs.mkdir()
        (programs / "xdg-open").write_text(BROWSER.format(python=sys.executable, folder=str(self.folder)))
        (programs / "xdg-open").chmod(0o700)
        before = os.environ["PATH"]
        os.environ["PATH"] = f"{programs}:{before}"
        self.addCleanup(os.environ.update, PATH=before)

    def keys(self, *names):
        xdotool("key", "--delay", 40, *names)

    def type(self, text):
        xdotool("type", "--delay", 20, text)

    def begin(self):
        """By the key that presses the button with the focus; until the browser shows the provider's page."""
        self.widget("button", "Sign in")
        self.keys("Return")
        self.widget("label", "Signing in: go on in your browser.")
        until((self.folder / "page").exists, "the browser was opened")

    def test_a_person_sets_a_provider_signs_in_and_out(self):
        self.start_all()
        self.assertEqual(self.start("velmora", "--dashboard").wait(), 0)
        self.press("radio button", "Ecosystem Sync")
        self.widget("label", "Your name and e-mail address are for you to see here: nothing else in Velmora depends on them.")
        self.press("button", "No provider is set: choose one")
        self.widget("text", "Issuer")
        self.type(self.issuer)
        self.keys("Tab")
        self.type("velmora")
        self.keys("Tab", "Tab", "Tab", "space")  # past the optional ones, to the button that uses it
        self.widget("label", f"The provider is {self.issuer}, which knows Velmora as velmora.")

        self.begin()
        self.widget("button", "Cancel")
        self.keys("space")
        self.widget("label", "The secret store is locked or does not answer")  # for there is none here
        (self.folder / "page").unlink()
        self.begin()
        (self.folder / "agreed").touch()
        self.widget("label", "Signed in since ")
        self.widget("label", "Mara Lind")
        self.widget("label", "mara@example.org")
        until((self.folder / "shown").exists, "the browser shows an end")
        self.assertIn(b"You are signed in.", (self.folder / "shown").read_bytes())
        told = subprocess.run([BIN / "velmoractl", "account"], capture_output=True, text=True, check=True).stdout
        self.assertIn("Mara Lind", told)

        self.keys("space")
        self.widget("label", "Nobody is signed in.")
        self.provider.end()
        self.press("button", "Sign in")
        self.widget("alert", "The identity provider cannot be reached")


if __name__ == "__main__":
    unittest.main(verbosity=2)
