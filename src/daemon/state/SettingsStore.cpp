// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "state/SettingsStore.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace velmora {

namespace {

using Json = nlohmann::ordered_json;

/// The fields of the settings under their names on the wire.
template <typename Settings, typename Visit>
void forEachField(Settings& settings, const Visit& visit)
{
    const auto name = [](std::size_t index) {
        return wire::daemon_protocol::settingsArguments.at(index).name;
    };
    visit(name(0), settings.isAppleRecommendedMode);
    visit(name(1), settings.isTemporaryOverride);
    visit(name(2), settings.isStorageModeEnabled);
    visit(name(3), settings.customChargeLimit);
    visit(name(4), settings.customHysteresis);
    visit(name(5), settings.notifyOnLimit);
    visit(name(6), settings.notifyOnHeat);
    visit(name(7), settings.notifyOnCycle);
    visit(name(8), settings.notifyOnPowerChange);
    visit(name(9), settings.lowBatteryLimit);
}

Json encoded(const ChargingSettings& settings)
{
    Json object = Json::object();
    forEachField(settings, [&object](const char* name, const auto& value) { object[name] = value; });
    return object;
}

void take(const Json& value, bool& field, bool& isGood)
{
    if (value.is_boolean()) {
        field = value.get<bool>();
    } else {
        isGood = false;
    }
}

void take(const Json& value, double& field, bool& isGood)
{
    if (value.is_number()) {
        field = value.get<double>();
    } else {
        isGood = false;
    }
}

/// Adds to `wrong` what is not as it should be.
ChargingSettings decodedSettings(const Json& object, std::string& wrong)
{
    ChargingSettings settings;
    forEachField(settings, [&](const char* name, auto& field) {
        bool isGood = object.is_object() && object.contains(name);
        if (isGood) take(object.at(name), field, isGood);
        if (!isGood)
            wrong += std::string(wrong.empty() ? "" : ", ") + name + " is missing or of another type";
    });
    if (const auto problem = problemWith(settings)) {
        wrong += (wrong.empty() ? "" : ", ") + *problem;
        const ChargingSettings defaults;
        settings.customChargeLimit = defaults.customChargeLimit;
        settings.customHysteresis = defaults.customHysteresis;
        settings.lowBatteryLimit = defaults.lowBatteryLimit;
    }
    return withLowBatteryClamped(settings);
}

std::string number(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", value);
    return text.data();
}

} // namespace

std::optional<std::string> problemWith(const ChargingSettings& settings)
{
    // Written so that NaN, which compares with nothing, fails.
    const auto within = [](double value, double low, double high) { return value >= low && value <= high; };
    if (!within(settings.customChargeLimit, 20, 100)) {
        return "customChargeLimit " + number(settings.customChargeLimit) + " is not within 20 to 100";
    }
    if (!within(settings.customHysteresis, 0, 20)) {
        return "customHysteresis " + number(settings.customHysteresis) + " is not within 0 to 20";
    }
    if (!std::isfinite(settings.lowBatteryLimit)) {
        return "lowBatteryLimit " + number(settings.lowBatteryLimit) + " is not a number";
    }
    return std::nullopt;
}

ChargingSettings withLowBatteryClamped(ChargingSettings settings)
{
    settings.lowBatteryLimit = std::clamp(settings.lowBatteryLimit, 0.0, 100.0);
    return settings;
}

std::string encodeState(const DaemonState& state)
{
    Json callers = Json::object();
    for (const auto& [name, settings] : state.callers) callers[name] = encoded(settings);
    const Json document = {{"version", 1},
                           {"settings", encoded(state.settings)},
                           {"quickCharge", rawValue(state.quickCharge)},
                           {"hasAdoptedLimit", state.hasAdoptedLimit},
                           {"charging", rawValue(state.manual.state)},
                           {"pausedAt", state.manual.pausedAt},
                           {"busId", state.busId},
                           {"callers", std::move(callers)}};
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::pair<DaemonState, std::string> decodeState(std::string_view bytes)
{
    DaemonState state;
    const Json document = Json::parse(bytes, nullptr, /*allow_exceptions=*/false);
    if (!document.is_object() || document.value("version", Json()) != 1) {
        return {state, "it is not a settings file of this version"};
    }
    std::string wrong;
    state.settings = decodedSettings(document.value("settings", Json()), wrong);
    const auto text = [&](const char* key) {
        const Json value = document.value(key, Json());
        return value.is_string() ? value.get<std::string>() : std::string();
    };
    const auto quickCharge = quickChargeStateFromRawValue(text("quickCharge"));
    if (!quickCharge) wrong += (wrong.empty() ? "" : ", ") + std::string("quickCharge is none of its states");
    state.quickCharge = quickCharge.value_or(QuickCharge::State::off);
    state.hasAdoptedLimit = document.value("hasAdoptedLimit", Json()) == true;
    state.manual.state = manualStateFromRawValue(text("charging")).value_or(ManualCharging::State::asSet);
    const Json pausedAt = document.value("pausedAt", Json());
    if (pausedAt.is_number_unsigned()) {
        state.manual.pausedAt = static_cast<int>(std::min<std::uint64_t>(pausedAt.get<std::uint64_t>(), 100));
    }
    state.busId = text("busId");
    if (const Json callers = document.value("callers", Json()); callers.is_object()) {
        for (const auto& [name, settings] : callers.items()) {
            std::string broken;
            auto decoded = decodedSettings(settings, broken);
            if (broken.empty()) state.callers.emplace_back(name, decoded);
        }
    }
    return {state, wrong};
}

DaemonState SettingsStore::load()
{
    const auto bytes = file_.read();
    if (!bytes) return {};
    auto [state, wrong] = decodeState(*bytes);
    if (!wrong.empty()) file_.setAside(wrong);
    return state;
}

bool SettingsStore::save(const DaemonState& state)
{
    const bool isSaved = file_.write(encodeState(state));
    hasFailed_ = !isSaved;
    return isSaved;
}

} // namespace velmora
