// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "battery/BatteryDataSource.h"

#include <array>
#include <charconv>

namespace velmora {

namespace {

/// The shortest decimal form that reads back as the same double, always marked as one ("80.0").
std::string decimal(double value)
{
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    std::string result(text.data(), end);
    if (result.find_first_of(".enif") == std::string::npos) result += ".0";
    return result;
}

} // namespace

std::string_view rawValue(ChargingState state)
{
    return state == ChargingState::charging ? "Charging" : "Idle";
}

std::optional<ChargingState> chargingStateFromRawValue(std::string_view text)
{
    for (const auto state : {ChargingState::charging, ChargingState::idle}) {
        if (text == rawValue(state)) return state;
    }
    return std::nullopt;
}

std::string SharedBatteryState::id() const
{
    return deviceID ? *deviceID : "unknown_" + decimal(percentage);
}

} // namespace velmora

std::size_t
std::hash<velmora::SharedBatteryState>::operator()(const velmora::SharedBatteryState& s) const noexcept
{
    std::size_t seed = 0;
    const auto mix = [&seed](const auto& value) {
        seed ^= std::hash<std::decay_t<decltype(value)>>{}(value) + 0x9e3779b97f4a7c15U + (seed << 6U) +
                (seed >> 2U);
    };
    mix(s.percentage);
    mix(s.isCharging);
    mix(s.powerSource);
    mix(s.timeToFull);
    mix(s.timeToEmpty);
    mix(s.remoteChargeLimit);
    mix(s.remoteAppleMode);
    mix(s.isStorageModeEnabled);
    mix(s.commandTimestamp ? std::optional(s.commandTimestamp->sinceReference) : std::nullopt);
    mix(s.deviceID);
    mix(s.deviceName);
    mix(s.thermalState);
    return seed;
}
