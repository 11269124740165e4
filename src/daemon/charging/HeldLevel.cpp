// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/HeldLevel.h"

#include <utility>

namespace velmora {

namespace {

constexpr const FixedLimit* low = fixedLimit("55-60");
constexpr const FixedLimit* high = fixedLimit("80");
/// By so much gauges and firmware may differ, in percent.
constexpr double tolerance = 1;
constexpr std::chrono::minutes patience{2};

const FixedLimit* signOf(const ChargeReading& reading)
{
    const double level = reading.lowestLevel();
    const double power = reading.chargingPower.value_or(0);
    if (reading.isCharging && power > 0 && level > low->end + tolerance && level < high->end) return high;
    // Charging at a rate of zero is how some firmware says that it holds.
    const bool isInBand = level >= low->start && level <= low->end + tolerance;
    return isInBand && power == 0 && !reading.takesPower() ? low : nullptr;
}

} // namespace

HeldLevel::HeldLevel(std::string_view known)
{
    const auto* limit = fixedLimit(known);
    if (limit == low || limit == high) limit_ = limit;
}

bool HeldLevel::observe(bool isOn, const ChargeReading& reading, Time now)
{
    const auto* sign = isOn && reading.hasExternalPower ? signOf(reading) : nullptr;
    if (std::exchange(sign_, sign) != sign) since_ = now;
    if (!sign || sign == limit_ || now - since_ < patience) return false;
    limit_ = sign;
    return true;
}

} // namespace velmora
