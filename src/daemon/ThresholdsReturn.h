// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/FirstHeld.h"
#include "platform/Log.h"
#include "power/Sysfs.h"
#include "state/SettingsStore.h"

#include <string>
#include <vector>

namespace velmora {

/// What giving back came to, a sentence for each charger that takes limits.
struct ThresholdsReturn {
    std::vector<std::string> done;
    std::vector<std::string> failed;
};

/// Has each charger hold again what it held at first; one of which that is not known charges to 100 %. Writes
/// once, where it differs. May wait for the firmware. Why a write failed is a line in `log`.
ThresholdsReturn giveThresholdsBack(const Sysfs& sysfs, const FirstHeld::Entries& firstHeld, Log& log);

/// Where a daemon that ended left a pause for heat behind, has each charger do as the settings say. May wait
/// for the firmware. Whether there is none any more; why not is a line in `log`.
bool liftHeatPause(const Sysfs& sysfs, SettingsStore& settings, Log& log);

/// `velmorad --lift-heat-pause`, which systemd runs after the daemon, however that ended. The exit status: 1
/// where a charger could not be told.
int liftHeatPause();

/// `velmorad --restore-thresholds`: gives back what the state directory tells, and prints what came of it.
/// Needs no bus, and is for when no daemon runs: one would set its limit again. The exit status: 1 where a
/// charger could not be given back.
int restoreThresholds();

} // namespace velmora
