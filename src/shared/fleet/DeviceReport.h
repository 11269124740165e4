// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"
#include "battery/BatteryDataSource.h"
#include "platform/CloudDatabase.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The records of devices: type, names and fields.
namespace device_record {
inline constexpr auto type = "DeviceStatus";
inline constexpr std::string_view prefix = "DeviceStatus_";

// Of a device's status, by the device.
inline constexpr auto percentage = "percentage";
inline constexpr auto isCharging = "isCharging";
inline constexpr auto thermalState = "thermalState";
inline constexpr auto deviceName = "deviceName";
inline constexpr auto lastUpdate = "lastUpdate";
// Of a command, by another device.
inline constexpr auto remoteChargeLimit = "remoteChargeLimit";
inline constexpr auto remoteAppleMode = "remoteAppleMode";
inline constexpr auto isStorageModeEnabled = "isStorageModeEnabled";
inline constexpr auto commandTimestamp = "commandTimestamp";
inline constexpr auto commandOrigin = "commandOrigin"; ///< which device, for the other's log
// What is in force there, by the device.
inline constexpr auto limitInForce = "limitInForce";
inline constexpr auto autoProtectInForce = "autoProtectInForce";
inline constexpr auto storageModeInForce = "storageModeInForce";
inline constexpr auto acceptsCommands = "acceptsCommands";
inline constexpr auto commandTaken = "commandTaken"; ///< the timestamp of the last one taken over

std::string nameOf(std::string_view deviceID);
} // namespace device_record

/// What a device says of itself beside its battery's state: without these nobody can fill a command for it.
struct SettingsInForce {
    double limit = 0; ///< percent
    bool isAutoProtectOn = false;
    bool isStorageModeOn = false;
    bool acceptsCommands = false;
    std::optional<Date> commandTaken{}; ///< when the last command was given that it has taken over

    friend bool operator==(const SettingsInForce&, const SettingsInForce&) = default;
};

/// A device's record, read. Never fails: what is absent or of another type is left out. A text is one line of
/// UTF-8, cut after `longestText` bytes.
struct DeviceReport {
    static constexpr std::size_t longestText = 255;
    static constexpr double silence = 600; ///< seconds without an upload, after which it may be removed
    /// What a command may set, percent.
    static constexpr double lowestLimit = 50, highestLimit = 100;

    std::string recordName{};   ///< as it is stored; what was read from a bus has none
    SharedBatteryState state{}; ///< the nine fields; the device's identifier is in `deviceID`
    std::optional<Date> lastUpdate{};
    std::optional<SettingsInForce> inForce{}; ///< nothing while any but `commandTaken` is missing
    std::optional<std::string> commandOrigin{};

    DeviceReport() = default;
    explicit DeviceReport(const CloudRecord& record);

    /// Nobody has heard of it for so long that it may be removed. A time that is as far ahead as that says
    /// nothing: the clocks differ.
    bool isSilent(Date now) const;
    /// A command to it may have that limit: one that may be set, or the one in force there.
    bool takesLimit(double limit) const;

    friend bool operator==(const DeviceReport&, const DeviceReport&) = default;
};

} // namespace velmora
