// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/PushPacer.h"

#include <utility>

namespace velmora {

namespace {
constexpr std::chrono::milliseconds spacing{2000};
}

void PushPacer::offer(HSBatteryState state)
{
    if (state == last_) {
        waiting_.reset();
        timer_.reset();
        return;
    }
    const auto passed = clock_.sinceBoot() - lastTime_;
    if (!last_ || passed >= spacing) return push(state);
    waiting_ = std::move(state);
    if (timer_) return;
    timer_ = loop_.after(spacing - passed, [this] {
        const auto spent = std::exchange(timer_, nullptr);
        if (const auto latest = std::exchange(waiting_, std::nullopt)) push(*latest);
    });
}

void PushPacer::push(const HSBatteryState& state)
{
    waiting_.reset();
    timer_.reset();
    last_ = state;
    lastTime_ = clock_.sinceBoot();
    push_(state);
}

} // namespace velmora
