// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "battery/BatteryHardwareService.h"

#include "platform/Platform.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

template <typename T>
const T* find(const PowerSourceDescription& source, const char* key)
{
    const auto found = source.find(key);
    return found == source.end() ? nullptr : std::get_if<T>(&found->second);
}

template <typename T>
T valueOr(const PowerSourceDescription& source, const char* key, T otherwise)
{
    const auto* value = find<T>(source, key);
    return value ? *value : otherwise;
}

/// Numbers come as integers or as doubles.
double numberOr(const PowerSourceDescription& source, const char* key, double otherwise)
{
    if (const auto* integer = find<std::int64_t>(source, key)) return static_cast<double>(*integer);
    return valueOr(source, key, otherwise);
}

bool holdsText(const PowerSourceDescription& source, const char* key, std::string_view text)
{
    const auto* value = find<std::string>(source, key);
    return value && *value == text;
}

double percentage(const PowerSourceDescription& battery, Complaints* complaints)
{
    constexpr auto cause = "percentage";
    const double current = numberOr(battery, power_source_key::currentCapacity, 0);
    const double full = numberOr(battery, power_source_key::maxCapacity, 100);
    const double percent = current * 100 / full; // in this order 58 of 100 are 58, not 57.99999999999999
    if (std::isfinite(percent)) {
        if (complaints) complaints->settle(cause);
        return percent;
    }
    if (complaints) {
        complaints->raise(cause, "The battery's capacity reads " + std::to_string(current) + " of " +
                                     std::to_string(full) + ", which is no level; taking 0%.");
    }
    return 0;
}

} // namespace

std::optional<SharedBatteryState>
BatteryHardwareService::stateFromDescriptions(const std::vector<PowerSourceDescription>& sources,
                                              Complaints* complaints)
{
    const auto battery = std::ranges::find_if(sources, [](const PowerSourceDescription& source) {
        return holdsText(source, power_source_key::type, "InternalBattery");
    });
    if (battery == sources.end()) return std::nullopt;

    const bool onMains = holdsText(*battery, power_source_key::powerSourceState, "AC Power");
    return SharedBatteryState{
        .percentage = percentage(*battery, complaints),
        .isCharging = valueOr(*battery, power_source_key::isCharging, false),
        .powerSource = onMains ? "AC" : "Battery",
        .timeToFull = valueOr<std::int64_t>(*battery, power_source_key::timeToFullCharge, -1),
        .timeToEmpty = valueOr<std::int64_t>(*battery, power_source_key::timeToEmpty, -1),
    };
}

BatteryHardwareService::BatteryHardwareService()
    : powerSources_(Platform::current().powerSources),
      complaints_(*Platform::current().log, "BatteryHardwareService")
{
}

void BatteryHardwareService::startMonitoring(Update onUpdate)
{
    onUpdate_ = std::move(onUpdate);
    if (!changes_) changes_ = powerSources_->observeChanges([this] { update(); });
    update();
}

void BatteryHardwareService::update()
{
    if (!onUpdate_) return; // a reading may take seconds on slow firmware
    const auto state = stateFromDescriptions(powerSources_->descriptions(), &complaints_);
    if (!state) return;
    // A copy: the subscriber may subscribe anew, or drop the service, from inside its call.
    const auto deliver = onUpdate_;
    deliver(*state);
}

} // namespace velmora
