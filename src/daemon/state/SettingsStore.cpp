// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "state/SettingsStore.h"

#include "charging/HeldLevel.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <unistd.h>

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

Json encoded(const ChargingSettings& settings, SettingsMask fields = SettingsMask().set())
{
    Json object = Json::object();
    const auto archive = archived(settings, fields);
    for (const auto& [name, value] : archive.values()) object[name] = jsonOf(value);
    return object;
}

void note(std::string& wrong, const std::string& what)
{
    wrong += (wrong.empty() ? "" : ", ") + what;
}

/// A setting that is not there has its default. One that is not as it should be has it too, and `wrong` says
/// so.
ChargingSettings decodedSettings(const Json& object, std::string& wrong)
{
    ChargingSettings settings;
    if (!object.is_object()) note(wrong, "there are no settings");
    for (const auto& setting : allSettings) {
        if (!object.is_object() || !object.contains(setting.name)) continue;
        const auto value = valueOf(object.at(setting.name));
        if (!value || !setting.assign(settings, *value))
            note(wrong, std::string(setting.name) + " is of another type");
        if (const auto problem = setting.problemIn(settings)) {
            note(wrong, *problem);
            setting.assign(settings, setting.of({}));
        }
    }
    return clamped(settings);
}

/// The members of an object of settings, by name; those that are not good are left out.
std::vector<std::pair<std::string, ChargingSettings>> decodedMembers(const Json& object)
{
    std::vector<std::pair<std::string, ChargingSettings>> members;
    if (!object.is_object()) return members;
    for (const auto& [name, settings] : object.items()) {
        std::string wrong;
        const auto decoded = decodedSettings(settings, wrong);
        if (wrong.empty()) members.emplace_back(name, decoded);
    }
    return members;
}

UserSettings::Entries decodedUsers(const Json& object)
{
    UserSettings::Entries users;
    for (const auto& [name, settings] : decodedMembers(object)) {
        uid_t user = 0;
        const auto* end = name.data() + name.size();
        const auto [rest, error] = std::from_chars(name.data(), end, user);
        if (error == std::errc{} && rest == end) users.emplace_back(user, settings);
    }
    return UserSettings(users).entries();
}

std::string textAt(const Json& document, const char* key)
{
    const Json value = document.value(key, Json());
    return value.is_string() ? value.get<std::string>() : std::string();
}

ManualCharging decodedManual(const Json& document)
{
    ManualCharging manual;
    manual.state =
        manualStateFromRawValue(textAt(document, "charging")).value_or(ManualCharging::State::asSet);
    const Json pausedAt = document.value("pausedAt", Json());
    if (pausedAt.is_number_unsigned())
        manual.pausedAt = static_cast<int>(std::min<std::uint64_t>(pausedAt.get<std::uint64_t>(), 100));
    return manual;
}

Json encodedHeld(const std::optional<Thresholds>& held)
{
    if (!held) return nullptr;
    Json object = {{"end", held->end}};
    if (held->start) object["start"] = *held->start;
    return object;
}

std::optional<int> percentAt(const Json& object, const char* key)
{
    const Json value = object.value(key, Json());
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > 100) return std::nullopt;
    return value.get<int>();
}

/// What cannot be is taken for not known.
FirstHeld::Entries decodedFirstHeld(const Json& object, std::string& wrong)
{
    FirstHeld::Entries entries;
    if (object.is_null()) return entries;
    if (!object.is_object() || object.size() > FirstHeld::maximumEntries) {
        note(wrong, "firstHeld is not what chargers held");
        return entries;
    }
    for (const auto& [name, held] : object.items()) {
        auto& entry = entries[name];
        if (held.is_null()) continue;
        const auto end = held.is_object() ? percentAt(held, "end") : std::nullopt;
        if (end.value_or(0) > 0)
            entry = Thresholds{percentAt(held, "start"), *end};
        else
            note(wrong, "firstHeld has no end threshold");
    }
    return entries;
}

Json encodedTold(const ChargeEventRules::Memory& told)
{
    return {{"powerSource", told.powerSource},
            {"level", told.level},
            {"cycleCount", told.cycleCount},
            {"pausedAtLimit", told.pausedAtLimit},
            {"isChargingToLimit", told.isChargingToLimit},
            {"isHeatTold", told.isHeatTold}};
}

/// What cannot be is as if nothing had been told.
ChargeEventRules::Memory decodedTold(const Json& object)
{
    ChargeEventRules::Memory told;
    if (!object.is_object()) return told;
    const auto source = textAt(object, "powerSource");
    if (source == "AC" || source == "Battery") told.powerSource = source;
    told.level = percentAt(object, "level").value_or(-1);
    const Json cycles = object.value("cycleCount", Json());
    if (cycles.is_number_unsigned())
        told.cycleCount =
            static_cast<std::int64_t>(std::min<std::uint64_t>(cycles.get<std::uint64_t>(), 1'000'000));
    told.pausedAtLimit = percentAt(object, "pausedAtLimit").value_or(-1);
    told.isChargingToLimit = object.value("isChargingToLimit", Json()) == true;
    told.isHeatTold = object.value("isHeatTold", Json()) == true;
    return told;
}

constexpr int currentVersion = 2;

/// Without what is more than ours ever is: to copy deep nesting takes a stack as deep, and to find a name
/// among very many takes hours.
Json parsed(std::string_view bytes)
{
    constexpr int maximumDepth = 8;
    constexpr int maximumNames = 10'000;
    int names = 0;
    const auto isKept = [&names](int depth, Json::parse_event_t event, const Json&) {
        const bool isName = event == Json::parse_event_t::key;
        return depth <= maximumDepth && (!isName || ++names <= maximumNames);
    };
    return Json::parse(bytes, isKept, /*allow_exceptions=*/false);
}

SettingsMask storedOfMachine()
{
    auto fields = settingsOf(Setting::Owner::machine);
    for (std::size_t i = 0; i < allSettings.size(); ++i)
        if (allSettings[i].isOneOff) fields[i] = false;
    return fields;
}

} // namespace

std::string encodeState(const DaemonState& state)
{
    Json users = Json::object();
    for (const auto& [user, settings] : state.users)
        users[std::to_string(user)] = encoded(settings, settingsOf(Setting::Owner::user));
    Json firstHeld = Json::object();
    for (const auto& [name, held] : state.firstHeld) firstHeld[name] = encodedHeld(held);
    Json callers = Json::object();
    for (const auto& [name, settings] : state.callers) callers[name] = encoded(settings);
    const Json document = {{"version", currentVersion},
                           {"settings", encoded(state.settings, storedOfMachine())},
                           {"users", std::move(users)},
                           {"quickCharge", rawValue(state.quickCharge)},
                           {"quickChargeCause", rawValue(state.quickChargeCause)},
                           {"hasAdoptedLimit", state.hasAdoptedLimit},
                           {"firstHeld", std::move(firstHeld)},
                           {"charging", rawValue(state.manual.state)},
                           {"pausedAt", state.manual.pausedAt},
                           {"heldLevel", state.heldLevel},
                           {"told", encodedTold(state.told)},
                           {"isPausedForHeat", state.isPausedForHeat},
                           {"busId", state.busId},
                           {"callers", std::move(callers)}};
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::pair<DaemonState, std::string> decodeState(std::string_view bytes, uid_t owner)
{
    DaemonState state;
    const Json document = parsed(bytes);
    const Json version = document.is_object() ? document.value("version", Json()) : Json();
    if (version != 1 && version != currentVersion) {
        return {state, "it is not a settings file of this version"};
    }
    std::string wrong;
    const auto settings = decodedSettings(document.value("settings", Json()), wrong);
    state.settings = combined({}, settings, storedOfMachine());
    state.users = version == 1 ? UserSettings({{owner, settings}}).entries()
                               : decodedUsers(document.value("users", Json()));
    const auto quickCharge = quickChargeStateFromRawValue(textAt(document, "quickCharge"));
    if (!quickCharge) note(wrong, "quickCharge is none of its states");
    state.quickCharge = quickCharge.value_or(QuickCharge::State::off);
    if (textAt(document, "quickChargeCause") == rawValue(QuickCharge::Cause::travel))
        state.quickChargeCause = QuickCharge::Cause::travel;
    state.settings.isTemporaryOverride = state.quickCharge == QuickCharge::State::active;
    state.hasAdoptedLimit = document.value("hasAdoptedLimit", Json()) == true;
    state.firstHeld = decodedFirstHeld(document.value("firstHeld", Json()), wrong);
    state.manual = decodedManual(document);
    state.heldLevel = HeldLevel(textAt(document, "heldLevel")).text();
    state.told = decodedTold(document.value("told", Json()));
    state.isPausedForHeat = document.value("isPausedForHeat", Json()) == true;
    state.busId = textAt(document, "busId");
    state.callers = decodedMembers(document.value("callers", Json()));
    return {state, wrong};
}

DaemonState SettingsStore::load()
{
    const auto bytes = file_.read();
    if (!bytes) return {};
    auto [state, wrong] = decodeState(*bytes, geteuid());
    if (!wrong.empty()) file_.setAside(wrong);
    return state;
}

DaemonState SettingsStore::peek()
{
    const auto bytes = file_.read();
    return bytes ? decodeState(*bytes, geteuid()).first : DaemonState{};
}

bool SettingsStore::save(const DaemonState& state)
{
    const bool isSaved = file_.write(encodeState(state));
    hasFailed_ = !isSaved;
    return isSaved;
}

} // namespace velmora
