// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargePolicy.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace velmora {

/// One charge to 100 %. Asking is an edge: after it has ended by itself it is spent, and asking again means
/// nothing until somebody has taken the request back. Clients repeat the flag with every message they send
/// and never learn that it was fulfilled; without this it would begin anew with each of them.
///
/// It ends when the battery is full, which is when its status says Full, or when at 99 % and more no power
/// has gone in for two minutes; and when the machine has been unplugged for over a minute. Some
/// firmware also says Full while it holds a limit far below 100 %: there the status ends the charge only
/// after it has lasted two minutes.
class QuickCharge {
public:
    enum class State : std::uint8_t { off, active, spent };
    enum class Cause : std::uint8_t {
        person, ///< somebody who wants it now, and may sit in front of it
        travel, ///< a journey ahead: nobody need be there
    };
    using Time = std::chrono::milliseconds; ///< since boot

    explicit QuickCharge(State state = State::off, Cause cause = Cause::person) : state_(state), cause_(cause)
    {
    }

    State state() const { return state_; }
    bool isActive() const { return state_ == State::active; }

    /// What the one that is active was begun for.
    Cause cause() const { return cause_; }
    bool isForPerson() const { return isActive() && cause_ == Cause::person; }
    bool isForTravel() const { return isActive() && cause_ == Cause::travel; }

    /// A client asks for it or takes it back. Returns whether that changed the state.
    bool ask(bool wanted, Cause cause = Cause::person);
    /// Somebody asks in so many words for what was begun before a journey: from now on it is theirs.
    void takeOver() { cause_ = Cause::person; }

    /// How it has ended by itself.
    struct End {
        std::string_view why; ///< a phrase
        bool isFulfilled;     ///< the battery is as full as it gets
    };
    /// Takes a reading in; returns how it has ended, if it has with this one. `isPaused`: the battery may not
    /// charge, and nothing that it says then is a reason to call it full.
    std::optional<End> observe(const ChargeReading& reading, Time now, bool isPaused = false);

    /// When a reading without change would end it; absent if none would.
    std::optional<Time> due() const;

private:
    State state_;
    Cause cause_;
    std::optional<Time> fullSince_;
    std::optional<Time> unpluggedSince_;
};

/// "person" or "travel".
std::string_view rawValue(QuickCharge::Cause cause);
std::string_view rawValue(QuickCharge::State state);
std::optional<QuickCharge::State> quickChargeStateFromRawValue(std::string_view text);

} // namespace velmora
