// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "fleet/DeviceReport.h"

#include "base/Text.h"
#include "base/Utf8.h"

#include <cmath>

namespace velmora {

namespace {

using namespace device_record;

/// The record's name without the prefix, wherever that occurs.
std::string deviceIDOf(std::string name)
{
    for (auto at = name.find(prefix); at != std::string::npos; at = name.find(prefix, at))
        name.erase(at, prefix.size());
    return name;
}

/// Another machine wrote it, so it may be anything, and long.
std::optional<std::string> textOf(const CloudRecord& record, std::string_view field)
{
    const auto stored = record.value<std::string>(field);
    if (!stored) return std::nullopt;
    constexpr auto longest = DeviceReport::longestText, read = 2 * longest; // what is cut there is not seen
    return std::string(utf8Prefix(printable(cleanUtf8(std::string_view(*stored).substr(0, read))), longest));
}

SharedBatteryState stateOf(const CloudRecord& record)
{
    SharedBatteryState state;
    state.percentage = record.value<double>(percentage).value_or(0);
    state.isCharging = record.value<bool>(isCharging).value_or(false);
    state.powerSource = "Cloud";
    state.remoteChargeLimit = record.value<double>(remoteChargeLimit);
    state.remoteAppleMode = record.value<bool>(remoteAppleMode);
    state.isStorageModeEnabled = record.value<bool>(isStorageModeEnabled);
    state.commandTimestamp = record.value<Date>(commandTimestamp);
    state.deviceID = deviceIDOf(record.name());
    state.deviceName = textOf(record, deviceName);
    state.thermalState = textOf(record, thermalState);
    return state;
}

std::optional<SettingsInForce> inForceOf(const CloudRecord& record)
{
    const auto limit = record.value<double>(limitInForce);
    const auto autoProtect = record.value<bool>(autoProtectInForce);
    const auto storageMode = record.value<bool>(storageModeInForce);
    const auto accepts = record.value<bool>(acceptsCommands);
    if (!limit || !autoProtect || !storageMode || !accepts) return std::nullopt;
    return SettingsInForce{.limit = *limit,
                           .isAutoProtectOn = *autoProtect,
                           .isStorageModeOn = *storageMode,
                           .acceptsCommands = *accepts,
                           .commandTaken = record.value<Date>(commandTaken)};
}

} // namespace

std::string device_record::nameOf(std::string_view deviceID)
{
    return std::string(prefix).append(deviceID);
}

DeviceReport::DeviceReport(const CloudRecord& record)
    : recordName(record.name()),
      state(stateOf(record)),
      lastUpdate(record.value<Date>(device_record::lastUpdate)),
      inForce(inForceOf(record)),
      commandOrigin(textOf(record, device_record::commandOrigin))
{
}

bool DeviceReport::isSilent(Date now) const
{
    return !lastUpdate || std::abs(now - *lastUpdate) >= silence;
}

bool DeviceReport::takesLimit(double limit) const
{
    constexpr double lowest = 0; // in force, by a script there or an older version
    const bool isSettable = limit >= lowestLimit && limit <= highestLimit;
    return isSettable || (inForce && limit == inForce->limit && limit >= lowest && limit <= highestLimit);
}

} // namespace velmora
