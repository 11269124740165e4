// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "output/StatusView.h"

#include "base/Decimal.h"
#include "base/Moment.h"
#include "base/Saturate.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "output/Lines.h"
#include "texts/ChargerTexts.h"
#include "texts/PanelTexts.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

namespace velmora::ctl {

namespace {

std::string joined(const std::vector<std::string>& parts)
{
    std::string result;
    for (const auto& part : parts) result += (result.empty() ? "" : ", ") + part;
    return result;
}

std::string quantity(double value, const char* unit)
{
    return decimalText(value, 1) + ' ' + unit;
}

std::string percent(double value)
{
    return decimalText(value, 1) + '%';
}

std::string stateWord(const std::string& state)
{
    using State = BatteryReport::State;
    if (state == State::charging) return tr("charging");
    if (state == State::discharging) return tr("discharging");
    if (state == State::notCharging) return tr("not charging");
    return state == State::full ? tr("full") : tr("state unknown");
}

std::string nowText(const BatteryReport& battery)
{
    std::vector<std::string> parts;
    if (battery.percentage) parts.push_back(percent(*battery.percentage));
    if (battery.state) parts.push_back(stateWord(*battery.state));
    if (battery.power) parts.push_back(quantity(*battery.power, "W"));
    if (battery.voltage) parts.push_back(quantity(*battery.voltage, "V"));
    if (battery.temperature) parts.push_back(quantity(*battery.temperature, "°C"));
    return joined(parts);
}

std::string energyText(const BatteryReport& battery)
{
    std::vector<std::string> parts;
    const auto add = [&](const char* text, const std::optional<double>& energy) {
        if (energy) parts.push_back(tr(text, quantity(*energy, "Wh")));
    };
    add(trMark("%1 now"), battery.energyNow);
    add(trMark("%1 when full"), battery.energyFull);
    add(trMark("%1 by design"), battery.energyFullDesign);
    return joined(parts);
}

std::string wearText(const BatteryReport& battery)
{
    std::vector<std::string> parts;
    if (battery.health) parts.push_back(tr("health %1", percent(*battery.health)));
    if (battery.cycleCount) parts.push_back(trn("%1 cycle", "%1 cycles", *battery.cycleCount));
    const auto make = trimmed(battery.manufacturer.value_or("") + ' ' + battery.model.value_or(""));
    if (!make.empty()) parts.push_back(make);
    return joined(parts);
}

void addBattery(Lines& lines, const BatteryReport& battery)
{
    std::string label = battery.name.value_or(tr("Battery"));
    for (const auto& text : {nowText(battery), energyText(battery), wearText(battery)}) {
        if (!text.empty()) lines.add(std::exchange(label, ""), text);
    }
}

std::string onOff(bool isOn)
{
    return isOn ? tr("on") : tr("off");
}

std::string lastActionText(const ChargerReport& charger)
{
    if (charger.lastActionDate == Date{}) return tr("None since the daemon was started.");
    return localTime(charger.lastActionDate) + "  " + charger.lastAction;
}

void addCharger(Lines& lines, const Snapshot& now, const Situation& situation)
{
    const auto& settings = now.settings;
    const auto effect = charger::limitEffect(situation);
    if (effect != charger::limiterText(situation)) lines.add(tr("Limit"), effect);
    lines.add("", charger::startEffect(situation, settings.customChargeLimit, settings.customHysteresis));
    lines.add(tr("Auto-Protect"), settings.isAppleRecommendedMode
                                      ? tr("on, at %1", panel::percentageText(settings.customChargeLimit))
                                      : tr("off"));
    lines.add(tr("Storage mode"), onOff(settings.isStorageModeEnabled));
    lines.add(tr("Quick charge"), onOff(settings.isTemporaryOverride));
    lines.add(tr("Driver"), now.charger.driver);
    lines.add(tr("Last action"), lastActionText(now.charger));
    if (now.charger.lastActionDate != Date{}) lines.add("", now.charger.lastReason);
    for (const auto& other : now.others)
        lines.add(tr("Also active"),
                  tr("%1 runs here and may set the same thresholds: let one of the two do it.", other));
}

/// With a date in place of the number of seconds that the wire has; null for a date that never was.
Json withDate(const KeyedArchive& record, const char* key)
{
    auto result = jsonOf(record);
    const auto date = record.decodeDate(key).value_or(Date{});
    result[key] = date == Date{} ? Json() : Json(utcTime(date));
    return result;
}

} // namespace

ThermalMonitorService::ThermalState heatOf(std::string_view text)
{
    return ThermalMonitorService::thermalStateFromRawValue(text).value_or(
        ThermalMonitorService::ThermalState::nominal);
}

Situation situationOf(const Snapshot& now)
{
    const double level = std::clamp(now.state.percentage, 0.0, 100.0);
    return {.percentage = level,
            .isCharging = now.state.isCharging,
            .isOnBattery = now.state.powerSource == "Battery",
            .timeToFull = now.state.timeToFull,
            .timeToEmpty = now.state.timeToEmpty,
            .timeToLimit = now.state.isCharging
                               ? BatteryModel::minutesToLimit(level, now.settings.customChargeLimit,
                                                              now.state.timeToFull)
                               : -1,
            .isAutoProtectOn = now.settings.isAppleRecommendedMode,
            .limit = now.settings.customChargeLimit,
            .charger = now.charger};
}

std::string statusText(const Snapshot& now)
{
    Lines lines;
    const auto situation = situationOf(now);
    lines.add(tr("Battery"), charger::tooltip(situation, heatOf(now.state.thermalState)));
    if (!isBatteryMissing(situation)) {
        lines.add("", charger::limiterText(situation));
        addCharger(lines, now, situation);
    }
    for (const auto& battery : now.batteries) addBattery(lines, battery);
    return lines.text();
}

Json statusJson(const Snapshot& now)
{
    const auto situation = situationOf(now);
    auto batteries = Json::array();
    for (const auto& battery : now.batteries) batteries.push_back(jsonOf(battery.archived()));
    return {{"percentage", isBatteryMissing(situation) ? Json() : Json(situation.percentage)},
            {"summary", charger::limiterText(situation)},
            {"state", jsonOf(now.state.archived())},
            {"charger", withDate(now.charger.archived(), "LastActionDate")},
            // The machine's own settings: no user's.
            {"settings", jsonOf(archived(now.settings, settingsOf(Setting::Owner::machine)))},
            {"batteries", std::move(batteries)},
            {"otherPrograms", now.others}};
}

} // namespace velmora::ctl
