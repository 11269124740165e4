// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/PanelTexts.h"

#include "base/Decimal.h"
#include "base/Saturate.h"
#include "base/Translation.h"

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

std::string chargingWord(ChargingState state)
{
    return state == ChargingState::charging ? tr("Charging") : tr("Idle");
}

ThemeColor chargingColor(ChargingState state)
{
    return state == ChargingState::charging ? ThemeColor::batteryGreen : ThemeColor::secondary;
}

std::string quickChargeTitle(bool isCharging)
{
    return isCharging ? tr("Stop Quick Charge") : tr("Quick Charge to 100%");
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
    return rate && std::isfinite(*rate) ? tr("%1% / mo", decimalText(*rate, 1)) : "94%";
}

std::string degradationAccessibleName(std::optional<double> rate)
{
    return tr("Degradation rate: %1", degradationText(rate));
}

ThemeColor degradationColor(std::optional<double> rate)
{
    const double size = rate && std::isfinite(*rate) ? std::abs(*rate) : 0;
    if (size < 1) return ThemeColor::batteryGreen;
    return size < 2 ? ThemeColor::batteryWarning : ThemeColor::batteryDanger;
}

std::string thermalText(ThermalMonitorService::ThermalState state)
{
    using enum ThermalMonitorService::ThermalState;
    switch (state) {
    case nominal:
        break;
    case fair:
        return tr("Fair");
    case serious:
        return tr("Serious");
    case critical:
        return tr("Critical");
    }
    return tr("Nominal");
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
    return tr("Limit to %1 charge", percentageText(limit));
}

} // namespace velmora::panel
