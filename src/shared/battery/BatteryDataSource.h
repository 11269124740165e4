// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Whether a battery takes charge.
enum class ChargingState : std::uint8_t { charging, idle };

/// "Charging" or "Idle".
std::string_view rawValue(ChargingState state);
/// Nothing for any text that is not exactly a raw value.
std::optional<ChargingState> chargingStateFromRawValue(std::string_view text);

/// One device's battery state, as read from the hardware or from the cloud.
struct SharedBatteryState {
    double percentage = 0;         ///< percent, 0 to 100
    bool isCharging = false;       ///< the battery takes charge right now
    std::string powerSource{};     ///< as reported; may carry surrounding blanks
    std::int64_t timeToFull = -1;  ///< minutes; below 1 unknown
    std::int64_t timeToEmpty = -1; ///< minutes; below 1 unknown

    std::optional<double> remoteChargeLimit{};  ///< percent, asked for by another device
    std::optional<bool> remoteAppleMode{};      ///< recommended mode, asked for by another device
    std::optional<bool> isStorageModeEnabled{}; ///< as reported or asked for
    std::optional<Date> commandTimestamp{};     ///< when the remote request was issued
    std::optional<std::string> deviceID{};      ///< absent for this machine's own reading
    std::optional<std::string> deviceName{};
    std::optional<std::string> thermalState{}; ///< a raw text of ThermalMonitorService::ThermalState

    /// The device identifier, or "unknown_" with the percentage where there is none (80 gives
    /// "unknown_80.0").
    std::string id() const;

    friend bool operator==(const SharedBatteryState&, const SharedBatteryState&) = default;
};

/// A source of battery readings.
class BatteryDataSource {
public:
    using Update = std::function<void(const SharedBatteryState&)>;

    virtual ~BatteryDataSource() = default;

    /// Keeps `onUpdate`, in place of any earlier one, and calls it with each new reading.
    virtual void startMonitoring(Update onUpdate) = 0;

    /// Asks for a fresh reading now; it arrives through the callback given to `startMonitoring`.
    virtual void update() = 0;
};

} // namespace velmora

/// Over all twelve fields: equal values hash alike.
template <>
struct std::hash<velmora::SharedBatteryState> {
    std::size_t operator()(const velmora::SharedBatteryState& state) const noexcept;
};
