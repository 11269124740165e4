// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/KeyedArchive.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Something that happened to charging and may be worth a notice. The daemon tells it to all clients; whether
/// anybody is shown a notice is each user's own choice.
struct ChargeEvent {
    enum class Kind : std::uint8_t {
        chargingPaused,     ///< the limit was reached and holds
        chargingResumed,    ///< the level fell below the start, and the battery charges again
        thermalPause,       ///< charging waits until the battery has cooled down
        overrideCompleted,  ///< a quick charge has come to 100 %
        powerSourceChanged, ///< to `powerSource`
        levelLost,          ///< a whole point while discharging; `level` is what is left
        cycleCompleted,     ///< the battery's count has risen by one, to `cycleCount`
    };

    Kind kind = Kind::chargingPaused;
    std::string powerSource{};    ///< a text of HSBatteryState::powerSource
    std::int64_t level = -1;      ///< whole percent
    std::int64_t cycleCount = -1; ///< of the battery

    /// Key "kind", and the one that the kind has beside it: "powerSource", "level" or "cycleCount".
    KeyedArchive archived() const;
    /// Nothing for a kind that is not known here, or one whose value is missing.
    static std::optional<ChargeEvent> unarchived(const KeyedArchive& archive);

    friend bool operator==(const ChargeEvent&, const ChargeEvent&) = default;
};

/// The texts of `kind` on the wire, in the order of ChargeEvent::Kind.
inline constexpr std::array<std::string_view, 7> chargeEventKinds{
    "charging paused",      "charging resumed", "thermal pause",  "override completed",
    "power source changed", "level lost",       "cycle completed"};

} // namespace velmora
