// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "power/PowerSnapshot.h"
#include "wire/VelmoraProtocol.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The battery as the policy needs it.
struct ChargeReading {
    double percentage = 0;
    bool isCharging = false;
    bool isDischarging = false;            ///< none charges, and any of them gives power
    bool isFull = false;                   ///< the battery itself says so
    bool hasExternalPower = true;          ///< mains, dock or USB; true on a desktop
    std::optional<double> chargingPower{}; ///< watts, negative while the battery gives; absent if not known
    std::optional<double> emptiest{};      ///< percent, of the emptiest where there are several batteries

    /// What the machine without a battery has is external power.
    static ChargeReading of(const PowerSnapshot& snapshot);

    /// The level that decides whether anything charges below a limit.
    double lowestLevel() const { return emptiest.value_or(percentage); }

    /// Whether power goes into the battery. Some firmware says "Charging" at a rate of zero while it holds.
    bool takesPower() const { return isCharging && chargingPower.value_or(1) > 0; }
};

/// What a charger lets itself be told.
enum class ChargeControl : std::uint8_t { none, fixedLimit, endThreshold, thresholds };
std::string_view name(ChargeControl control);

/// What a person asked for by hand with the charging toggle, until the next plug or changed setting.
struct ManualCharging {
    enum class State : std::uint8_t { asSet, paused, resumed };
    State state = State::asSet;
    int pausedAt = 0; ///< percent, the level at which a pause began

    friend bool operator==(const ManualCharging&, const ManualCharging&) = default;
};

/// "as set", "paused" or "resumed".
std::string_view rawValue(ManualCharging::State state);
std::optional<ManualCharging::State> manualStateFromRawValue(std::string_view text);

enum class ChargeMode : std::uint8_t { off, autoProtect, storage, quickCharge, paused, resumed, heat };
std::string_view name(ChargeMode mode);

/// Start and end of charging, in whole percent: charging begins below `start` and stops at `end`.
struct Thresholds {
    std::optional<int> start{}; ///< absent where the charger has none
    int end = 100;

    friend bool operator==(const Thresholds&, const Thresholds&) = default;
};

struct ChargeDecision {
    ChargeMode mode = ChargeMode::off;
    std::optional<Thresholds> thresholds{}; ///< absent where the charger cannot be told
    std::string reason;                     ///< a sentence

    friend bool operator==(const ChargeDecision&, const ChargeDecision&) = default;
};

/// What the charger is to hold. A pause by the toggle beats all, one for heat beats whatever would charge;
/// then the toggle beats quick charge, which beats storage mode, which beats Auto-Protect, which beats
/// nothing.
///
/// `heatPausedAt`: the level, percent, at which charging waits for the battery to cool down; absent for none.
///
/// Hysteresis is the start threshold where the charger has one. An end threshold alone leaves resuming to the
/// firmware: moving the end up and down would drain on some controllers and wear all of them.
ChargeDecision decideCharging(const ChargingSettings& settings, bool isQuickCharging,
                              const ManualCharging& manual, ChargeControl control,
                              std::optional<int> heatPausedAt = std::nullopt);

/// Whether a charger that holds `inForce` lets the battery charge at this level. Between start and end it
/// goes on with what it did, which is what the reading shows.
bool isChargingAllowed(const std::optional<Thresholds>& inForce, const ChargeReading& reading);

} // namespace velmora
