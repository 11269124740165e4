// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "state/SettingsStore.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace velmora {

namespace {

using Json = nlohmann::ordered_json;

Json jsonOf(const KeyedArchive::Value& value)
{
    return std::visit([](const auto& one) { return Json(one); }, value);
}

/// Nothing for what is neither true, false nor a number.
std::optional<KeyedArchive::Value> valueOf(const Json& json)
{
    if (json.is_boolean()) return json.get<bool>();
    if (json.is_number()) return json.get<double>();
    return std::nullopt;
}

Json encoded(const ChargingSettings& settings)
{
    Json object = Json::object();
    for (const auto& setting : allSettings) object[setting.name] = jsonOf(setting.of(settings));
    return object;
}

void note(std::string& wrong, const std::string& what)
{
    wrong += (wrong.empty() ? "" : ", ") + what;
}

/// Adds to `wrong` what is not as it should be; that setting has its default then.
ChargingSettings decodedSettings(const Json& object, std::string& wrong)
{
    ChargingSettings settings;
    for (const auto& setting : allSettings) {
        const auto value = object.is_object() && object.contains(setting.name)
                               ? valueOf(object.at(setting.name))
                               : std::nullopt;
        if (!value || !setting.assign(settings, *value))
            note(wrong, std::string(setting.name) + " is missing or of another type");
        if (const auto problem = setting.problemIn(settings)) {
            note(wrong, *problem);
            setting.assign(settings, setting.of({}));
        }
    }
    return clamped(settings);
}

} // namespace

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
    if (!quickCharge) note(wrong, "quickCharge is none of its states");
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
