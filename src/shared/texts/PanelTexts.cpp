// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/PanelTexts.h"

#include "base/Decimal.h"
#include "base/Saturate.h"

#include <cmath>

namespace velmora::panel {

std::string_view name(ThemeColor color)
{
    static constexpr std::array<std::string_view, 8> names{
        "batteryGreen", "batteryWarning", "batteryDanger", "accent", "orange", "blue", "green", "secondary"};
    return names[static_cast<std::size_t>(color)];
}

std::string percentageText(double percentage)
{
    return std::to_string(truncated(percentage)) + "%";
}

std::string_view chargingWord(ChargingState state)
{
    return rawValue(state);
}

ThemeColor chargingColor(ChargingState state)
{
    return state == ChargingState::charging ? ThemeColor::batteryGreen : ThemeColor::secondary;
}

std::string_view quickChargeTitle(bool isCharging)
{
    return isCharging ? "Stop Quick Charge" : "Quick Charge to 100%";
}

std::string_view quickChargeSymbol(bool isCharging)
{
    return isCharging ? "bolt.slash.fill" : "bolt.fill";
}

ThemeColor quickChargeTint(bool isCharging)
{
    return isCharging ? ThemeColor::orange : ThemeColor::accent;
}

std::string degradationText(std::optional<double> rate)
{
    return rate && std::isfinite(*rate) ? decimalText(*rate, 1) + "% / mo" : "94%";
}

std::string degradationAccessibleName(std::optional<double> rate)
{
    return "Degradation rate: " + degradationText(rate);
}

ThemeColor degradationColor(std::optional<double> rate)
{
    const double size = rate && std::isfinite(*rate) ? std::abs(*rate) : 0;
    if (size < 1) return ThemeColor::batteryGreen;
    return size < 2 ? ThemeColor::batteryWarning : ThemeColor::batteryDanger;
}

std::string_view thermalText(ThermalMonitorService::ThermalState state)
{
    return ThermalMonitorService::rawValue(state);
}

ThemeColor thermalColor(ThermalMonitorService::ThermalState state)
{
    using enum ThermalMonitorService::ThermalState;
    switch (state) {
    case nominal:
        return ThemeColor::blue;
    case fair:
        return ThemeColor::green;
    case serious:
        return ThemeColor::batteryWarning;
    case critical:
        return ThemeColor::batteryDanger;
    }
    return ThemeColor::secondary;
}

std::string limitCaption(double limit)
{
    return "Limit to " + std::to_string(truncated(limit)) + "% charge";
}

} // namespace velmora::panel
