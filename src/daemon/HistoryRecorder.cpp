// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "HistoryRecorder.h"

#include "thermal/ThermalMonitorService.h"

#include <string>

namespace velmora {

void HistoryRecorder::record(const MachineBattery& battery, int thermalLevel)
{
    const auto& past = samples();
    // A driver that does not tell the design capacity tells of no wear.
    const double health = battery.health.value_or(past.empty() ? 100 : past.back().health);
    const auto thermal = ThermalMonitorService::thermalState(thermalLevel);
    const bool isKept =
        store().record({ports_.clock.now(), battery.percentage, health,
                        std::string(ThermalMonitorService::rawValue(thermal)), battery.isCharging});
    if (isKept) save();
}

void HistoryRecorder::save()
{
    ports_.files.async([&store = ports_.store, bytes = ports_.store.encoded()] { store.save(bytes); });
}

} // namespace velmora
