// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/KeyedArchive.h"

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velmora {

/// The settings that the daemon holds, with their defaults. Each has a row in `allSettings`; the message to
/// the daemon, its file, its memory of clients and the model's interface are made from those rows.
struct ChargingSettings {
    bool isAppleRecommendedMode = true;
    bool isTemporaryOverride = false;
    bool isStorageModeEnabled = false;
    double customChargeLimit = 80; ///< percent
    double customHysteresis = 2;   ///< percentage points
    bool notifyOnLimit = true;
    bool notifyOnHeat = true;
    bool notifyOnCycle = false;
    bool notifyOnPowerChange = true;
    double lowBatteryLimit = 20; ///< percent

    friend bool operator==(const ChargingSettings&, const ChargingSettings&) = default;
};

/// The level at which storage mode holds the battery, percent.
inline constexpr double storageLevel = 50;

/// One of the settings.
struct Setting {
    enum class Owner : std::uint8_t {
        machine, ///< one value for all; changing it needs rights
        user,    ///< each user's own
    };
    enum class Range : std::uint8_t {
        strict,  ///< a number outside is refused
        clamped, ///< a finite number outside is brought within
    };

    const char* name;                                                         ///< on the wire and in files
    std::variant<bool ChargingSettings::*, double ChargingSettings::*> field; ///< with type and default
    Owner owner;
    const char* modelProperty; ///< the model's property of the same meaning
    double lowest = 0;         ///< of a number
    double highest = 0;
    Range range = Range::strict;
    bool isOneOff = false; ///< asks for something once: neither assigned in the model nor stored as it is

    constexpr bool isNumber() const { return field.index() == 1; }
    constexpr const char* type() const { return isNumber() ? "d" : "b"; } ///< D-Bus signature

    KeyedArchive::Value of(const ChargingSettings& settings) const;
    /// False, and nothing is assigned, where `value` is of another type.
    bool assign(ChargingSettings& settings, const KeyedArchive::Value& value) const;
    bool isEqual(const ChargingSettings& one, const ChargingSettings& other) const;

    /// Name and value for a person, "customChargeLimit 70".
    std::string textIn(const ChargingSettings& settings) const;
    /// Why the setting cannot have the value that it has in `settings`; nothing for a good one.
    std::optional<std::string> problemIn(const ChargingSettings& settings) const;
};

/// In the order of the message.
inline constexpr std::array allSettings{
    Setting{"isAppleRecommendedMode", &ChargingSettings::isAppleRecommendedMode, Setting::Owner::machine,
            "isAppleRecommendedModeEnabled"},
    Setting{.name = "isTemporaryOverride",
            .field = &ChargingSettings::isTemporaryOverride,
            .owner = Setting::Owner::machine,
            .modelProperty = "isTemporaryOverrideEnabled",
            .isOneOff = true},
    Setting{"isStorageModeEnabled", &ChargingSettings::isStorageModeEnabled, Setting::Owner::machine,
            "isStorageModeEnabled"},
    Setting{"customChargeLimit", &ChargingSettings::customChargeLimit, Setting::Owner::machine,
            "customChargeLimit", 20, 100},
    Setting{"customHysteresis", &ChargingSettings::customHysteresis, Setting::Owner::machine,
            "customHysteresis", 0, 20},
    Setting{"notifyOnLimit", &ChargingSettings::notifyOnLimit, Setting::Owner::user, "notifyOnLimit"},
    Setting{"notifyOnHeat", &ChargingSettings::notifyOnHeat, Setting::Owner::user, "notifyOnHeat"},
    Setting{"notifyOnCycle", &ChargingSettings::notifyOnCycle, Setting::Owner::user, "notifyOnCycle"},
    Setting{"notifyOnPowerChange", &ChargingSettings::notifyOnPowerChange, Setting::Owner::user,
            "notifyOnPowerChange"},
    Setting{"lowBatteryLimit", &ChargingSettings::lowBatteryLimit, Setting::Owner::user, "lowBatteryLimit", 0,
            100, Setting::Range::clamped},
};

/// Null where there is none of that name.
const Setting* findSetting(std::string_view name);

/// Some of the settings.
using SettingsMask = std::bitset<allSettings.size()>;
SettingsMask settingsOf(Setting::Owner owner);
/// Those in which the two differ.
SettingsMask differing(const ChargingSettings& one, const ChargingSettings& other);

/// What the daemon has told a client of the settings.
struct SettingsTold {
    ChargingSettings held;   ///< all of them, as it holds them
    SettingsMask byOthers{}; ///< what it has announced that this client neither asked for nor knew
    bool isAnswer = false;   ///< told to this client alone: it has asked, or was refused what it sent
};

/// `base`, with the values of `news` in the settings of `mask`.
ChargingSettings combined(ChargingSettings base, const ChargingSettings& news, SettingsMask mask);

/// The settings of `mask` under their names, in the table's order.
KeyedArchive archived(const ChargingSettings& settings, SettingsMask mask = SettingsMask().set());

/// Of an archive that somebody else made: a setting that is missing, of another type or cannot have its value
/// has its default.
ChargingSettings unarchivedSettings(const KeyedArchive& archive);

/// What is wrong with the first setting that cannot have its value; nothing for good ones.
std::optional<std::string> problemWith(const ChargingSettings& settings);
/// `settings` with the clamped ones brought within their range. To be asked after `problemWith`.
ChargingSettings clamped(ChargingSettings settings);

} // namespace velmora
