// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/FirstHeld.h"
#include "platform/Log.h"
#include "power/Sysfs.h"

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

/// `velmorad --restore-thresholds`: gives back what the state directory tells, and prints what came of it.
/// Needs no bus, and is for when no daemon runs: one would set its limit again. The exit status: 1 where a
/// charger could not be given back.
int restoreThresholds();

} // namespace velmora
