// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"
#include "wire/KeyedArchive.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace velmora {

/// What this laptop's charger can do, what is in force, what was last done to it and why. Read-only on the
/// bus, as the properties of an interface of its own: one property a key of the archive.
struct ChargerReport {
    static constexpr auto interface = "app.velmora.Charger";

    /// Texts of `control`.
    struct Control {
        static constexpr std::string_view thresholds = "thresholds";
        static constexpr std::string_view endThreshold = "end threshold";
        static constexpr std::string_view fixedLimit = "fixed limit"; ///< on or off, at a level of its own
        static constexpr std::string_view none = "none";
    };
    /// Texts of `mode`.
    struct Mode {
        static constexpr std::string_view paused = "paused"; ///< by the charging toggle, as is the next
        static constexpr std::string_view resumed = "resumed";
        /// Until the battery has cooled down.
        static constexpr std::string_view pausedForHeat = "paused for heat";
        static constexpr std::string_view quickCharge = "quick charge";
        static constexpr std::string_view storage = "storage";
        static constexpr std::string_view autoProtect = "auto-protect";
        static constexpr std::string_view off = "off";
    };

    bool hasBattery = false;
    std::string batteries{}; ///< names of the supplies, blank-separated
    std::string control{Control::none};
    std::string driver = "unknown"; ///< driver family whose rules are followed
    std::string mode{Mode::off};
    std::int64_t wantedStartThreshold = -1; ///< percent; -1 nothing asked for
    std::int64_t wantedEndThreshold = -1;
    std::int64_t startThreshold = -1; ///< percent, as the hardware reads back; -1 not there or not readable
    std::int64_t endThreshold = -1;
    /// While a fixed limit is on: the level that it holds, a text of `FixedLimit`. With "55-60" and "80" the
    /// thresholds say it too.
    std::string fixedLimit{};
    bool isRefused = false; ///< what is wanted could not be written; the daemon's log says why
    bool isChargingAllowed = true;
    /// The battery tells its temperature, and the charger takes a level to stop at.
    bool canPauseForHeat = false;
    std::string lastAction = "none"; ///< a sentence
    std::string lastReason = "none"; ///< a sentence
    Date lastActionDate{};           ///< of `lastAction`; 0 before the first
    double health = -1;              ///< percent, full over design capacity; -1 unknown
    std::int64_t cycleCount = -1;    ///< -1 unknown

    /// Keys are the names of `chargerProperties`.
    KeyedArchive archived() const;
    static ChargerReport unarchived(const KeyedArchive& archive);

    friend bool operator==(const ChargerReport&, const ChargerReport&) = default;
};

/// Something that was done to the charger; keys are "date", "action" and "reason".
struct ChargerAction {
    Date date{};
    std::string action; ///< a sentence
    std::string reason; ///< a sentence

    KeyedArchive archived() const;
};

/// A value of the report as a property of its interface.
struct ChargerProperty {
    using Member = std::variant<bool ChargerReport::*, std::int64_t ChargerReport::*, double ChargerReport::*,
                                std::string ChargerReport::*, Date ChargerReport::*>;

    const char* name;
    Member member;

    /// D-Bus signature.
    constexpr const char* type() const
    {
        constexpr std::array types{"b", "x", "d", "s", "d"}; // in the order of the variant
        static_assert(types.size() == std::variant_size_v<Member>);
        return types[member.index()];
    }
};

/// In the order in which they stand on the bus.
inline constexpr std::array chargerProperties{
    ChargerProperty{"HasBattery", &ChargerReport::hasBattery},
    ChargerProperty{"Batteries", &ChargerReport::batteries},
    ChargerProperty{"Control", &ChargerReport::control},
    ChargerProperty{"Driver", &ChargerReport::driver},
    ChargerProperty{"Mode", &ChargerReport::mode},
    ChargerProperty{"WantedStartThreshold", &ChargerReport::wantedStartThreshold},
    ChargerProperty{"WantedEndThreshold", &ChargerReport::wantedEndThreshold},
    ChargerProperty{"StartThreshold", &ChargerReport::startThreshold},
    ChargerProperty{"EndThreshold", &ChargerReport::endThreshold},
    ChargerProperty{"FixedLimit", &ChargerReport::fixedLimit},
    ChargerProperty{"IsRefused", &ChargerReport::isRefused},
    ChargerProperty{"IsChargingAllowed", &ChargerReport::isChargingAllowed},
    ChargerProperty{"CanPauseForHeat", &ChargerReport::canPauseForHeat},
    ChargerProperty{"LastAction", &ChargerReport::lastAction},
    ChargerProperty{"LastReason", &ChargerReport::lastReason},
    ChargerProperty{"LastActionDate", &ChargerReport::lastActionDate},
    ChargerProperty{"Health", &ChargerReport::health},
    ChargerProperty{"CycleCount", &ChargerReport::cycleCount},
};

} // namespace velmora
