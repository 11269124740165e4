// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ManualControl.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

/// A phrase for the log.
const char* textOf(ManualCharging::State state)
{
    if (state == ManualCharging::State::paused) return "charging is paused";
    return state == ManualCharging::State::resumed ? "charging is resumed"
                                                   : "charging follows the settings again";
}

} // namespace

ManualCharging ManualControl::after(ChargingCommand command) const
{
    using State = ManualCharging::State;
    const auto level = static_cast<int>(std::clamp(ports_.reading.lowestLevel(), 0.0, 100.0));
    const ManualCharging paused{State::paused, level};
    if (command == ChargingCommand::pause) return isPaused() ? state_ : paused;
    if (command == ChargingCommand::resume) return isPaused() ? ManualCharging{} : state_;
    if (!isAsSet()) return {};
    return ports_.isChargingAllowed() ? paused : ManualCharging{State::resumed, 0};
}

void ManualControl::control(const Caller& caller, ChargingCommand command,
                            const DaemonService::ChargingReply& reply)
{
    // What changes nothing needs no right.
    if (after(command) == state_) return obey(caller, command, reply);
    ports_.authorise(caller, "pause or resume charging",
                     [this, caller, command, reply](const std::optional<Refusal>& refusal) {
                         if (refusal) return reply(*refusal);
                         obey(caller, command, reply);
                     });
}

void ManualControl::obey(const Caller& caller, ChargingCommand command,
                         const DaemonService::ChargingReply& reply)
{
    const auto next = after(command);
    const bool isChange = next != state_;
    const bool waits = (isChange || !waiting_.empty()) && waiting_.size() < maximumWaiting;
    if (waits)
        waiting_.push_back(reply);
    else
        reply(ports_.isChargingAllowed());
    if (!isChange) return;
    state_ = next;
    ports_.logChange(caller, textOf(state_.state));
    ports_.changed();
}

void ManualControl::answer()
{
    for (const auto& reply : std::exchange(waiting_, {})) reply(ports_.isChargingAllowed());
}

} // namespace velmora
