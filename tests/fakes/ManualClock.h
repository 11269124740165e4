// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ManualLoop.h"
#include "platform/Clock.h"

namespace velmora {

/// Tells the time of a ManualLoop. The machine started an hour before the loop was made, at `start`.
class ManualClock final : public Clock {
public:
    static constexpr Date start{757'382'400}; ///< 2025-01-01 00:00:00 UTC

    explicit ManualClock(std::shared_ptr<const ManualLoop> loop) : loop_(std::move(loop)) {}

    Date now() const override { return start + std::chrono::duration<double>(loop_->elapsed()).count(); }
    std::chrono::milliseconds sinceBoot() const override { return loop_->elapsed() + std::chrono::hours{1}; }

private:
    std::shared_ptr<const ManualLoop> loop_;
};

} // namespace velmora
