// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LookSchedule.h"

#include <algorithm>
#include <utility>

namespace velmora {

using namespace std::chrono_literals;

namespace {

constexpr auto movingInterval = 30s;
constexpr auto movingSlack = 30s;
/// What is due may come with whatever else wakes the daemon by then.
constexpr auto dueSlack = 2s;
constexpr auto warmInterval = 1min;
constexpr auto warmSlack = 30s;
constexpr auto restingInterval = 10min;
constexpr auto restingSlack = 2min;
/// Writing a threshold announces nothing, and the kernel shows the old status for a second.
constexpr auto settleTime = 1500ms;
/// A client that asks is content with a look of this age.
constexpr auto freshness = 3s;
constexpr auto patience = 50ms;

} // namespace

LookSchedule::LookSchedule(const Ports& ports, std::function<void(const Look&)> seen)
    : ports_(ports), seen_(std::move(seen))
{
}

void LookSchedule::look(bool afresh)
{
    isAfreshWanted_ = isAfreshWanted_ || afresh;
    if (isLooking_) {
        isLookWanted_ = true;
        return;
    }
    isLooking_ = true;
    ports_.hardware.async([ports = ports_, isAfresh = std::exchange(isAfreshWanted_, false),
                           took = lifetime_.guard([this](const Look& look) { this->took(look); })] {
        Look look;
        look.snapshot = ports.reader.read(isAfresh);
        look.chargers = ports.actuator.inspect(look.snapshot.supplies.batteries);
        ports.loop.post([took, look = std::move(look)] { took(look); });
    });
}

void LookSchedule::took(const Look& look)
{
    isLooking_ = false;
    lastTime_ = look.snapshot.time;
    seen_(look);
    answer();
    if (std::exchange(isLookWanted_, false)) this->look();
}

void LookSchedule::lookAgainSoon()
{
    settledLook_ = ports_.loop.after(settleTime, lifetime_.guard([this] { look(); }));
}

void LookSchedule::lookIn(std::chrono::milliseconds delay, std::chrono::milliseconds slack)
{
    next_ = ports_.loop.after(delay, lifetime_.guard([this] { look(); }), slack);
}

void LookSchedule::plan(Pace pace, std::optional<std::chrono::milliseconds> due)
{
    next_.reset();
    if (due) {
        const auto left = std::max(*due - ports_.clock.sinceBoot(), 0ms);
        if (left < movingInterval) return lookIn(left, dueSlack);
    }
    switch (pace) {
    case Pace::none:
        return;
    case Pace::resting:
        return lookIn(restingInterval, restingSlack);
    case Pace::warm:
        return lookIn(warmInterval, warmSlack);
    case Pace::moving:
        return lookIn(movingInterval, movingSlack);
    }
}

void LookSchedule::ask(std::function<void()> answer)
{
    const bool isFresh = lastTime_ && ports_.clock.sinceBoot() - *lastTime_ < freshness;
    if (isFresh || asking_.size() >= maximumAsking) return answer();
    asking_.push_back(std::move(answer));
    if (!askingTimer_)
        askingTimer_ = ports_.loop.after(patience, lifetime_.guard([this] { this->answer(); }));
    if (!isLooking_) look();
}

void LookSchedule::answer()
{
    const auto spent = std::exchange(askingTimer_, nullptr);
    for (const auto& answer : std::exchange(asking_, {})) answer();
}

} // namespace velmora
