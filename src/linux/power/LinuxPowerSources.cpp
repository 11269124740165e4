// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/LinuxPowerSources.h"

namespace velmora {

namespace {

namespace key = power_source_key;

using std::string;

PowerSourceDescription describe(const MachineBattery& battery, TimeEstimator::Minutes minutes)
{
    PowerSourceDescription description = {
        {key::currentCapacity, battery.percentage}, {key::maxCapacity, std::int64_t{100}},
        {key::isCharging, battery.isCharging},      {key::isCharged, battery.isFull},
        {key::timeToFullCharge, minutes.toFull},    {key::timeToEmpty, minutes.toEmpty},
    };
    if (battery.health) description.emplace(key::health, *battery.health);
    if (battery.cycleCount) description.emplace(key::cycleCount, *battery.cycleCount);
    if (battery.power) description.emplace(key::chargingPower, *battery.power);
    return description;
}

string state(bool isExternallyPowered)
{
    return isExternallyPowered ? "AC Power" : "Battery Power";
}

} // namespace

std::vector<PowerSourceDescription> LinuxPowerSources::descriptions()
{
    const auto reading = reader_.read(isAfresh_.exchange(false));
    std::vector<PowerSourceDescription> all;
    if (const auto machine = MachineBattery::of(reading.batteries)) {
        auto& own = all.emplace_back(describe(*machine, estimator_.update(*machine, clock_.sinceBoot())));
        own.emplace(key::type, string("InternalBattery"));
        own.emplace(key::name, reading.batteries.front().name);
        own.emplace(key::lowestCapacity, machine->lowestPercentage);
        own.emplace(key::powerSourceState, state(reading.isExternallyPowered));
    }
    for (const auto& ups : reading.upses) {
        const auto battery = MachineBattery::of({ups});
        if (!battery) continue;
        // A single look has no mean to follow: each UPS is estimated afresh.
        auto& other =
            all.emplace_back(describe(*battery, TimeEstimator().update(*battery, clock_.sinceBoot())));
        other.emplace(key::type, string("UPS"));
        other.emplace(key::name, ups.name);
        other.emplace(key::powerSourceState, state(!battery->isDischarging));
    }
    return all;
}

Subscription LinuxPowerSources::observeChanges(std::function<void()> changed)
{
    if (!monitor_) return nullptr;
    return monitor_->observe([this, changed = std::move(changed)](SupplyNews news) {
        if (news == SupplyNews::event) isAfresh_ = true;
        changed();
    });
}

} // namespace velmora
