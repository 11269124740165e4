// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "charging/ChargeActuator.h"
#include "platform/Clock.h"
#include "platform/MainLoop.h"
#include "platform/WorkQueue.h"
#include "power/PowerSnapshot.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace velmora {

/// What one look at the machine shows.
struct Look {
    PowerSnapshot snapshot;
    std::vector<BatteryCharger> chargers;
};

/// How soon the machine is worth another look without an event.
enum class Pace : std::uint8_t {
    none,    ///< there is nothing to see
    resting, ///< the firmware holds: once in ten minutes
    warm,    ///< it holds and is hot: once in a minute
    moving,  ///< the battery charges or drains, of which most drivers announce little: every 30 to 60 s
};

/// Decides when the machine is looked at, and has the hardware's worker do it: firmware may take seconds to
/// answer. One look is on its way at a time. Main thread only.
class LookSchedule {
public:
    struct Ports {
        MainLoop& loop;
        const Clock& clock;
        WorkQueue& hardware; ///< the worker that alone calls the next two
        PowerSnapshotReader& reader;
        ChargeActuator& actuator;
    };

    /// Calls in a flood that would wait for a look; those past it are answered at once.
    static constexpr std::size_t maximumAsking = 64;

    /// `seen` is called with each look.
    LookSchedule(const Ports& ports, std::function<void(const Look&)> seen);

    /// Looks now; asked for while a look is on its way, once more after it. `afresh`: the supplies may have
    /// changed, and what was remembered of them does not count.
    void look(bool afresh = false);

    /// Looks in a moment, after something that shows its effect late.
    void lookAgainSoon();

    /// Puts the next regular look off to what `pace` says, or to `due` (since boot) if that is sooner.
    void plan(Pace pace, std::optional<std::chrono::milliseconds> due);

    /// Calls `answer` once the last look is at most three seconds old, which may take one: then with it, or
    /// after 50 ms if it takes longer.
    void ask(std::function<void()> answer);

private:
    void took(const Look& look);
    void answer();
    void lookIn(std::chrono::milliseconds delay, std::chrono::milliseconds slack);

    Lifetime lifetime_;
    Ports ports_;
    std::function<void(const Look&)> seen_;
    bool isLooking_ = false;
    bool isLookWanted_ = false;
    bool isAfreshWanted_ = false;
    std::optional<std::chrono::milliseconds> lastTime_; ///< of the last look, since boot
    std::vector<std::function<void()>> asking_;
    MainLoop::Timer askingTimer_;
    MainLoop::Timer next_;        ///< the regular look
    MainLoop::Timer settledLook_; ///< after something that shows its effect late
};

} // namespace velmora
