#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later

"""The fleet's page as a person uses it, over records on this computer."""

import contextlib
import json
import sqlite3
import stat
import time
import unittest

from stage import WindowTest, until

OTHER = "DeviceStatus_OTHER"


class FleetTest(WindowTest):
    title = "Velmora Dashboard"

    def setUp(self):
        self.file = self.folder / "Velmora/cloud.db"

    def execute(self, statement, *values):
        with contextlib.closing(sqlite3.connect(f"file:{self.file}?mode=rw", timeout=10, uri=True)) as store, store:
            return store.execute(statement, values).fetchall()

    def records(self):
        """By their names; none before there is a store."""
        try:
            return {name: json.loads(fields) for name, fields in self.execute("SELECT name, fields FROM record")}
        except sqlite3.OperationalError:
            return {}

    def save(self, name, **fields):
        """As another machine would."""
        self.execute("INSERT INTO record(type, name, fields) VALUES('DeviceStatus', ?1, ?2) ON CONFLICT(name) DO "
                     "UPDATE SET fields = json_patch(fields, excluded.fields)", name, json.dumps(fields))

    def test_a_machine_joins_commands_another_and_leaves(self):
        self.start_all()
        self.assertEqual(self.start("velmora", "--dashboard").wait(), 0)
        self.press("radio button", "Ecosystem Sync")
        self.widget("label", "See the batteries of all your machines")
        self.assertFalse(self.file.exists(), "nothing is written before a person says so")
        self.press("button", "Begin")
        self.widget("check box", self.own_name() + " (this machine): ")
        self.assertEqual(stat.S_IMODE(self.file.stat().st_mode), 0o600)

        self.save(OTHER, deviceName="Loft", percentage=41.0, isCharging=True, thermalState="Fair",
                  lastUpdate={"date": time.time()}, limitInForce=80.0, autoProtectInForce=True,
                  storageModeInForce=False, acceptsCommands=True)
        self.press("check box", "Loft: Charging, heat: Fair, just now, 41%")
        self.widget("label", "In force: Limit 80%, Auto-Protect on, storage mode off.")
        self.slide("Charge limit there", 0.4)
        self.press("check box", "Storage mode there")
        self.press("button", "Send to that machine")
        command = until(lambda: self.records()[OTHER].get("commandTimestamp") and self.records()[OTHER], "it is stored")
        sent = [command[field] for field in ("remoteChargeLimit", "remoteAppleMode", "isStorageModeEnabled")]
        self.assertEqual(sent, [70.0, True, True])
        self.widget("label", "Limit 70%, Auto-Protect on, storage mode on: sent just now. That machine looks")
        self.save(OTHER, limitInForce=70.0, storageModeInForce=True, commandTaken=command["commandTimestamp"])
        self.widget("label", "Limit 70%, Auto-Protect on, storage mode on: sent just now, and taken over there.")

        self.press("check box", self.own_name() + " (this machine): ")
        self.press("check box", "Accept commands")
        self.press("button", "Leave …")
        self.press("button", "Leave now")
        self.widget("button", "Begin")
        until(lambda: list(self.records()) == [OTHER], "its record has gone, and no other")

    def own_name(self):
        own = lambda: [fields for name, fields in self.records().items() if name != OTHER]
        return until(own, "this machine has a record")[0]["deviceName"]


if __name__ == "__main__":
    unittest.main(verbosity=2)
