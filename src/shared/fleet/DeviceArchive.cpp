// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "fleet/DeviceArchive.h"

#include "wire/ModelFace.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velmora {

namespace {

using namespace device_record;
using wire::face::fleet::device_key::deviceID;

constexpr std::array<std::string_view, 3> dates{lastUpdate, commandTimestamp, commandTaken};

template <typename T>
void encode(KeyedArchive& archive, const char* key, const std::optional<T>& value)
{
    if (value) archive.encode(key, *value);
}

/// A date travels as a number: its key tells it from one.
CloudRecord::Value fieldOf(std::string_view key, const KeyedArchive::Value& value)
{
    if (const auto* number = std::get_if<double>(&value))
        return std::ranges::find(dates, key) == dates.end() ? CloudRecord::Value(*number)
                                                            : CloudRecord::Value(Date{*number});
    if (const auto* number = std::get_if<std::int64_t>(&value)) return static_cast<double>(*number);
    if (const auto* flag = std::get_if<bool>(&value)) return *flag;
    return std::get<std::string>(value);
}

} // namespace

KeyedArchive archived(const DeviceReport& report)
{
    const auto& state = report.state;
    KeyedArchive archive;
    encode(archive, deviceID, state.deviceID);
    encode(archive, deviceName, state.deviceName);
    archive.encode(percentage, state.percentage);
    archive.encode(isCharging, state.isCharging);
    encode(archive, thermalState, state.thermalState);
    encode(archive, lastUpdate, report.lastUpdate);
    encode(archive, remoteChargeLimit, state.remoteChargeLimit);
    encode(archive, remoteAppleMode, state.remoteAppleMode);
    encode(archive, isStorageModeEnabled, state.isStorageModeEnabled);
    encode(archive, commandTimestamp, state.commandTimestamp);
    encode(archive, commandOrigin, report.commandOrigin);
    if (!report.inForce) return archive;
    archive.encode(limitInForce, report.inForce->limit);
    archive.encode(autoProtectInForce, report.inForce->isAutoProtectOn);
    archive.encode(storageModeInForce, report.inForce->isStorageModeOn);
    archive.encode(acceptsCommands, report.inForce->acceptsCommands);
    encode(archive, commandTaken, report.inForce->commandTaken);
    return archive;
}

DeviceReport unarchivedReport(const KeyedArchive& archive)
{
    CloudRecord record(type, nameOf(archive.decodeText(deviceID, "")));
    for (const auto& [key, value] : archive.values()) {
        const auto* number = std::get_if<double>(&value);
        if (!number || std::isfinite(*number)) record.set(key, fieldOf(key, value));
    }
    return DeviceReport(record);
}

} // namespace velmora
