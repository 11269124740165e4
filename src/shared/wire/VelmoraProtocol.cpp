// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "wire/VelmoraProtocol.h"

#include <algorithm>

namespace velmora {

HSBatteryState::HSBatteryState(double thePercentage, bool charging, std::string source, std::string thermal,
                               double chargeLimit, double hysteresis, std::int64_t minutesToFull,
                               std::int64_t minutesToEmpty, bool storageMode)
    : percentage(thePercentage),
      isCharging(charging),
      powerSource(std::move(source)),
      thermalState(std::move(thermal)),
      customChargeLimit(chargeLimit),
      customHysteresis(hysteresis),
      timeToFull(minutesToFull),
      timeToEmpty(minutesToEmpty),
      isStorageModeEnabled(storageMode)
{
}

HSBatteryState::HSBatteryState(const KeyedArchive& archive)
    : percentage(archive.decodeDouble("percentage", 0)),
      isCharging(archive.decodeBool("isCharging", false)),
      powerSource(archive.decodeText("powerSource", "Unknown")),
      thermalState(archive.decodeText("thermalState", "Nominal")),
      customChargeLimit(archive.decodeDouble("customChargeLimit", 0)),
      customHysteresis(archive.decodeDouble("customHysteresis", 0)),
      timeToFull(archive.decodeInteger("timeToFull", 0)),
      timeToEmpty(archive.decodeInteger("timeToEmpty", 0)),
      isStorageModeEnabled(archive.decodeBool("isStorageModeEnabled", false))
{
}

KeyedArchive HSBatteryState::archived() const
{
    KeyedArchive archive;
    archive.encode("percentage", percentage);
    archive.encode("isCharging", isCharging);
    archive.encode("powerSource", powerSource);
    archive.encode("thermalState", thermalState);
    archive.encode("customChargeLimit", customChargeLimit);
    archive.encode("customHysteresis", customHysteresis);
    archive.encode("timeToFull", timeToFull);
    archive.encode("timeToEmpty", timeToEmpty);
    archive.encode("isStorageModeEnabled", isStorageModeEnabled);
    return archive;
}

HSHistorySnapshot::HSHistorySnapshot(Date date, double level, double healthPercent, std::string thermal,
                                     bool charging)
    : timestamp(date),
      percentage(level),
      health(healthPercent),
      thermalState(std::move(thermal)),
      isCharging(charging)
{
}

HSHistorySnapshot::HSHistorySnapshot(const KeyedArchive& archive, Date now)
    : timestamp(archive.decodeDate("timestamp").value_or(now)),
      percentage(archive.decodeDouble("percentage", 0)),
      health(archive.decodeDouble("health", 0)),
      thermalState(archive.decodeText("thermalState", "Nominal")),
      isCharging(archive.decodeBool("isCharging", false))
{
}

KeyedArchive HSHistorySnapshot::archived() const
{
    KeyedArchive archive;
    archive.encode("timestamp", timestamp);
    archive.encode("percentage", percentage);
    archive.encode("health", health);
    archive.encode("thermalState", thermalState);
    archive.encode("isCharging", isCharging);
    return archive;
}

std::string wire::Message::member() const
{
    std::string name = selector;
    if (name.ends_with(':')) name.pop_back();
    std::ranges::replace(name, ':', '_');
    return name;
}

std::string wire::Message::signature(std::span<const Argument> arguments)
{
    std::string signature;
    for (const auto& argument : arguments) signature += argument.type;
    return signature;
}

} // namespace velmora
