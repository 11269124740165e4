// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "fleet/DeviceReport.h"

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
    state.deviceName = record.value<std::string>(deviceName);
    state.thermalState = record.value<std::string>(thermalState);
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
    : state(stateOf(record)),
      lastUpdate(record.value<Date>(device_record::lastUpdate)),
      inForce(inForceOf(record)),
      commandOrigin(record.value<std::string>(device_record::commandOrigin))
{
}

} // namespace velmora
