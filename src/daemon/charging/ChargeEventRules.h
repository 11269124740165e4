// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargePolicy.h"
#include "wire/ChargeEvent.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// Compares each look at the battery with the last one and tells which changes are events, for users'
/// notices. What was told is saved, so that a restart of the daemon repeats no event. The first look of all
/// tells none: there is nothing to compare it with.
///
/// **Paused**: a charge that was seen well below the limit of Auto-Protect or storage mode has come to it and
/// has stopped. **Resumed**: after that, the battery charges again well below the limit. "Well below" is what
/// a charger that holds its limit by short charges does not come to. A limit that a person moves, and a plug
/// that is pulled, end the pause without an event.
///
/// **Power source**: another than was last told, for three seconds without a break. **Level lost**: the whole
/// percents are fewer than last told, while the battery gives power; each of them is an event. **Heat**: a
/// charge waits for the battery to cool down; once until it is cool. **Cycle**: the count is greater by
/// exactly one; anything else is another battery.
class ChargeEventRules {
public:
    using Time = std::chrono::milliseconds; ///< since boot

    /// What one look shows, and what governs charging since.
    struct Facts {
        ChargeReading reading;
        ChargeMode mode = ChargeMode::off;
        std::optional<Thresholds> inForce{};
        bool isFixed = false;   ///< the limit is the firmware's own, somewhere from its start to its end
        bool isFollowed = true; ///< the charger does what was decided, as far as it can
        std::optional<std::int64_t> cycleCount{};
        bool isOverrideFulfilled = false; ///< a quick charge has come to its end with this look
        bool isCool = false;              ///< the battery's temperature is known, and no reason to pause

        bool isPausedForHeat() const { return mode == ChargeMode::heat; }
    };

    /// The values of the last events, which the daemon saves.
    struct Memory {
        std::string powerSource{};    ///< a text of HSBatteryState::powerSource; empty for nothing
        std::int64_t level = -1;      ///< whole percent; -1 for nothing
        std::int64_t cycleCount = -1; ///< -1 for nothing
        int pausedAtLimit = -1; ///< the limit, percent, at which charging was paused; -1 where it was not
        bool isChargingToLimit = false; ///< a charge was seen that the limit will stop
        bool isHeatTold = false;        ///< of the heat that there is now

        friend bool operator==(const Memory&, const Memory&) = default;
    };

    explicit ChargeEventRules(const Memory& memory) : memory_(memory) {}

    std::vector<ChargeEvent> observe(const Facts& facts, Time now);

    /// When a look that shows no change would make an event; absent if none would.
    std::optional<Time> due() const;

    const Memory& memory() const { return memory_; }
    /// The machine was started anew since these were told: of them only the count of cycles still says
    /// something.
    void forgetBoot() { memory_ = {.cycleCount = memory_.cycleCount}; }

private:
    void followSource(bool hasExternalPower, Time now);
    void followLimit(const Facts& facts);
    void followLevel(const ChargeReading& reading);
    void followHeat(const Facts& facts);
    void followCycles(std::optional<std::int64_t> count);
    void tell(ChargeEvent event) { events_.push_back(std::move(event)); }

    Memory memory_;
    std::optional<Time> otherSourceSince_;
    std::vector<ChargeEvent> events_; ///< of this look
};

} // namespace velmora
