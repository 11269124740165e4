// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "output/WatchLine.h"

#include "base/Saturate.h"
#include "base/Translation.h"
#include "output/Json.h"
#include "output/StatusView.h"
#include "texts/ChargerTexts.h"
#include "texts/PanelTexts.h"
#include "wire/FixedLimit.h"

#include <nlohmann/json.hpp>

namespace velmora::ctl {

namespace {

constexpr double fullLevel = 99; // percent; many a battery stops there

const char* classOf(const Situation& now)
{
    if (isBatteryMissing(now)) return "no-battery";
    if (now.isCharging) return "charging";
    if (now.isOnBattery) return "discharging";
    const auto& charger = *now.charger;
    using Mode = ChargerReport::Mode;
    if (charger.mode == Mode::paused || charger.mode == Mode::pausedForHeat) return "paused";
    const auto* own = fixedLimit(charger.fixedLimit);
    if (own && own->isExact && own->start >= 0 && now.percentage >= own->start) return "held";
    const bool isLimited = charger.endThreshold >= 0 && charger.endThreshold < 100;
    if (isLimited && now.percentage >= static_cast<double>(charger.endThreshold)) return "held";
    return !isLimited && now.percentage >= fullLevel ? "full" : "plugged";
}

std::string line(const std::string& text, const std::string& tooltip, const char* kind,
                 std::optional<double> percentage)
{
    Json result{{"text", text}, {"tooltip", tooltip}, {"class", kind}};
    if (percentage) result["percentage"] = truncated(*percentage);
    return jsonText(result);
}

} // namespace

std::string watchLine(const std::optional<Snapshot>& now, bool isJson)
{
    if (!now) {
        const auto why = tr("The Velmora daemon does not answer; it may not be running.");
        return isJson ? line("", why, "no-daemon", std::nullopt) : why;
    }
    const auto situation = situationOf(*now);
    auto summary = charger::tooltip(situation, heatOf(now->state.thermalState));
    if (!isJson) return summary;
    if (isBatteryMissing(situation)) return line("", summary, classOf(situation), std::nullopt);
    return line(panel::percentageText(situation.percentage), summary + ". " + charger::limiterText(situation),
                classOf(situation), situation.percentage);
}

} // namespace velmora::ctl
