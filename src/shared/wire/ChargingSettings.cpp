// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "wire/ChargingSettings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace velmora {

namespace {

/// Stands for a value of any type while members are counted.
struct Anything {
    template <typename T>
    operator T() const;
};

template <typename Record, typename... Members>
consteval std::size_t memberCount()
{
    if constexpr (requires { Record{Members{}..., Anything{}}; })
        return memberCount<Record, Members..., Anything>();
    else
        return sizeof...(Members);
}

static_assert(memberCount<ChargingSettings>() == allSettings.size(), "every setting needs a row");

std::string numberText(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", value);
    return text.data();
}

} // namespace

KeyedArchive::Value Setting::of(const ChargingSettings& settings) const
{
    return std::visit([&](auto member) { return KeyedArchive::Value(settings.*member); }, field);
}

bool Setting::assign(ChargingSettings& settings, const KeyedArchive::Value& value) const
{
    const auto take = [&](auto member) {
        auto& place = settings.*member;
        const auto* typed = std::get_if<std::remove_reference_t<decltype(place)>>(&value);
        if (typed) place = *typed;
        return typed != nullptr;
    };
    return std::visit(take, field);
}

bool Setting::isEqual(const ChargingSettings& one, const ChargingSettings& other) const
{
    return std::visit([&](auto member) { return one.*member == other.*member; }, field);
}

std::string Setting::textIn(const ChargingSettings& settings) const
{
    const auto text = [](auto value) {
        if constexpr (std::is_same_v<decltype(value), bool>)
            return std::string(value ? "true" : "false");
        else
            return numberText(value);
    };
    return std::string(name) + " " + std::visit([&](auto member) { return text(settings.*member); }, field);
}

std::optional<std::string> Setting::problemIn(const ChargingSettings& settings) const
{
    if (!isNumber()) return std::nullopt;
    const double value = settings.*std::get<1>(field);
    const auto named = textIn(settings);
    if (range == Range::clamped)
        return std::isfinite(value) ? std::nullopt : std::optional(named + " is not a finite number");
    const bool isWithin = value >= lowest && value <= highest; // NaN, which compares with nothing, is not
    if (isWithin) return std::nullopt;
    return named + " is not within " + numberText(lowest) + " to " + numberText(highest);
}

const Setting* findSetting(std::string_view name)
{
    const auto* found = std::ranges::find(allSettings, name, &Setting::name);
    return found == allSettings.end() ? nullptr : found;
}

SettingsMask settingsOf(Setting::Owner owner)
{
    SettingsMask mask;
    for (std::size_t i = 0; i < allSettings.size(); ++i) mask[i] = allSettings[i].owner == owner;
    return mask;
}

SettingsMask differing(const ChargingSettings& one, const ChargingSettings& other)
{
    SettingsMask mask;
    for (std::size_t i = 0; i < allSettings.size(); ++i) mask[i] = !allSettings[i].isEqual(one, other);
    return mask;
}

ChargingSettings combined(ChargingSettings base, const ChargingSettings& news, SettingsMask mask)
{
    for (std::size_t i = 0; i < allSettings.size(); ++i)
        if (mask[i]) allSettings[i].assign(base, allSettings[i].of(news));
    return base;
}

KeyedArchive archived(const ChargingSettings& settings, SettingsMask mask)
{
    KeyedArchive archive;
    for (std::size_t i = 0; i < allSettings.size(); ++i)
        if (mask[i]) archive.encode(allSettings[i].name, allSettings[i].of(settings));
    return archive;
}

ChargingSettings unarchivedSettings(const KeyedArchive& archive)
{
    ChargingSettings settings;
    for (const auto& setting : allSettings) {
        const auto* value = archive.find(setting.name);
        if (value) setting.assign(settings, *value);
        if (setting.problemIn(settings)) setting.assign(settings, setting.of({}));
    }
    return clamped(settings);
}

std::optional<std::string> problemWith(const ChargingSettings& settings)
{
    for (const auto& setting : allSettings)
        if (auto problem = setting.problemIn(settings)) return problem;
    return std::nullopt;
}

ChargingSettings clamped(ChargingSettings settings)
{
    for (const auto& setting : allSettings) {
        if (setting.range != Setting::Range::clamped) continue;
        auto& value = settings.*std::get<1>(setting.field);
        value = std::clamp(value, setting.lowest, setting.highest);
    }
    return settings;
}

} // namespace velmora
