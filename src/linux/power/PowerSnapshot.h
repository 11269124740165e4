// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Clock.h"
#include "power/LinuxThermalLevel.h"
#include "power/MachineBattery.h"
#include "power/PowerSupplyReader.h"

#include <chrono>
#include <optional>

namespace velmora {

/// The machine as it was at one moment: each power supply and each thermal zone, listed and read once.
struct PowerSnapshot {
    PowerSupplyReading supplies;
    std::optional<MachineBattery> battery; ///< absent without one, or where none tells its level
    int thermalLevel = 0;                  ///< 0 nominal, 1 fair, 2 serious, 3 critical
    std::chrono::milliseconds time{};      ///< since boot
};

/// Takes snapshots. One thread at a time; may take a while, as firmware answers when it likes.
class PowerSnapshotReader {
public:
    PowerSnapshotReader(const Sysfs& sysfs, const Clock& clock, Log& log)
        : supplies_(sysfs, log), zones_(sysfs, log), clock_(clock)
    {
    }

    /// `afresh`: the supplies may have changed, so that nothing counts that was remembered of them.
    PowerSnapshot read(bool afresh)
    {
        PowerSnapshot now;
        now.supplies = supplies_.read(afresh);
        now.thermalLevel = zones_.level();
        now.battery = MachineBattery::of(now.supplies.batteries);
        now.time = clock_.sinceBoot();
        return now;
    }

private:
    PowerSupplyReader supplies_;
    LinuxThermalLevel zones_;
    const Clock& clock_;
};

} // namespace velmora
