// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Clock.h"
#include "platform/MainLoop.h"
#include "wire/VelmoraProtocol.h"

#include <functional>
#include <optional>

namespace velmora {

/// Lets states out to the clients: only one that differs from the last, the first at once, then at most one
/// in two seconds, and always the last. Each push wakes every client, and they answer what they are told.
class PushPacer {
public:
    using Push = std::function<void(const HSBatteryState&)>;

    PushPacer(MainLoop& loop, const Clock& clock, Push push)
        : loop_(loop), clock_(clock), push_(std::move(push))
    {
    }

    /// The state is now this.
    void offer(HSBatteryState state);

private:
    void push(const HSBatteryState& state);

    MainLoop& loop_;
    const Clock& clock_;
    Push push_;
    std::optional<HSBatteryState> last_;
    std::chrono::milliseconds lastTime_{};
    std::optional<HSBatteryState> waiting_;
    MainLoop::Timer timer_;
};

} // namespace velmora
