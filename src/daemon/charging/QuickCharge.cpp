// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/QuickCharge.h"

#include <algorithm>

namespace velmora {

using namespace std::chrono_literals;

namespace {

constexpr QuickCharge::Time fullPatience = 2min;
constexpr QuickCharge::Time unpluggedPatience = 1min;
/// Below this a status of Full is more likely a limit that the firmware holds.
constexpr double believableFull = 95;
constexpr double nearlyFull = 99;

/// Keeps in `since` from when on something has held without a break.
void follow(std::optional<QuickCharge::Time>& since, bool holds, QuickCharge::Time now)
{
    if (!holds) {
        since.reset();
    } else if (!since) {
        since = now;
    }
}

} // namespace

bool QuickCharge::ask(bool wanted, Cause cause)
{
    if (wanted == (state_ != State::off)) return false;
    state_ = wanted ? State::active : State::off;
    cause_ = cause;
    fullSince_.reset();
    unpluggedSince_.reset();
    return true;
}

std::optional<QuickCharge::End> QuickCharge::observe(const ChargeReading& reading, Time now, bool isPaused)
{
    if (state_ != State::active) return std::nullopt;
    const bool mayBeFull = reading.isFull || (reading.percentage >= nearlyFull && !reading.takesPower());
    follow(fullSince_, mayBeFull && reading.hasExternalPower && !isPaused, now);
    follow(unpluggedSince_, !reading.hasExternalPower, now);

    std::optional<End> ended;
    const bool isFull = reading.percentage >= believableFull;
    if (reading.isFull && isFull && !isPaused) {
        ended = {"the battery is full", true};
    } else if (fullSince_ && now - *fullSince_ >= fullPatience) {
        ended = {"the battery takes no more", isFull};
    } else if (unpluggedSince_ && now - *unpluggedSince_ > unpluggedPatience) {
        ended = {"the charger was unplugged", false};
    }
    if (ended) state_ = State::spent;
    return ended;
}

std::optional<QuickCharge::Time> QuickCharge::due() const
{
    if (state_ != State::active) return std::nullopt;
    std::optional<Time> first;
    const auto consider = [&first](Time time) { first = first ? std::min(*first, time) : time; };
    if (fullSince_) consider(*fullSince_ + fullPatience);
    if (unpluggedSince_) consider(*unpluggedSince_ + unpluggedPatience + 1ms);
    return first;
}

std::string_view rawValue(QuickCharge::Cause cause)
{
    return cause == QuickCharge::Cause::travel ? "travel" : "person";
}

std::string_view rawValue(QuickCharge::State state)
{
    switch (state) {
    case QuickCharge::State::active:
        return "active";
    case QuickCharge::State::spent:
        return "spent";
    case QuickCharge::State::off:
        break;
    }
    return "off";
}

std::optional<QuickCharge::State> quickChargeStateFromRawValue(std::string_view text)
{
    for (const auto state :
         {QuickCharge::State::off, QuickCharge::State::active, QuickCharge::State::spent}) {
        if (text == rawValue(state)) return state;
    }
    return std::nullopt;
}

} // namespace velmora
