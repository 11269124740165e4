// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Translation.h"
#include "battery/BatteryDataSource.h"
#include "thermal/ThermalMonitorService.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The words, symbols and colours of the panel, from the model's values alone: what a person reads is decided
/// here, the views only lay it out. No value ends the program; what is no number reads as 0.
namespace velmora::panel {

/// Colours of the theme, by what they are for.
enum class ThemeColor : std::uint8_t {
    batteryGreen,
    batteryWarning,
    batteryDanger,
    accent,
    orange,
    blue,
    green,
    secondary,
};

/// The name under which the theme has it.
std::string_view name(ThemeColor color);

/// Whole percent, the fraction dropped: 79.6 reads "79%".
std::string percentageText(double percentage);

std::string chargingWord(ChargingState state);
ThemeColor chargingColor(ChargingState state);

std::string quickChargeTitle(bool isCharging);
std::string_view quickChargeSymbol(bool isCharging);
ThemeColor quickChargeTint(bool isCharging);

/// Of the battery's change of health, percent a month, a loss being negative. Where no rate is known yet the
/// text is a fixed one.
std::string degradationText(std::optional<double> rate);
std::string degradationAccessibleName(std::optional<double> rate);
/// A gain of health is coloured like a loss of the same size.
ThemeColor degradationColor(std::optional<double> rate);

std::string thermalText(ThermalMonitorService::ThermalState state);
ThemeColor thermalColor(ThermalMonitorService::ThermalState state);

/// Of a limit in percent; see charger::limitCaption.
std::string limitCaption(double limit);

/// A charge limit to choose.
struct Threshold {
    const char* text; ///< English
    double limit;     ///< percent
};

inline constexpr std::array thresholds{
    Threshold{trMark("Limit to 80%"), 80},
    Threshold{trMark("Limit to 90%"), 90},
    Threshold{trMark("Full Charge (100%)"), 100},
};

} // namespace velmora::panel
