// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Clock.h"
#include "platform/MainLoop.h"

#include <atomic>
#include <deque>
#include <map>
#include <mutex>

namespace velmora {

/// A main loop whose time is a variable: nothing runs until the test says so, and a day passes in
/// microseconds. The thread that calls `advance` or `runPosted` is the main thread.
class ManualLoop final : public MainLoop {
public:
    void post(Task task) override;

    /// Timers run at the start of their slack.
    [[nodiscard]] Timer after(std::chrono::milliseconds delay, Task task,
                              std::chrono::milliseconds slack = std::chrono::milliseconds{0}) override;

    /// Runs what was posted, then lets `time` pass: every timer that falls due runs at its moment, in order,
    /// and what it posts right after it.
    void advance(std::chrono::milliseconds time);

    /// Runs what was posted, and what that posts, with no time passing. Returns whether there was anything.
    bool runPosted();

    /// Time passed since the loop was made. Any thread.
    std::chrono::milliseconds elapsed() const { return elapsed_.load(); }

    /// How many timers would still call somebody: 0 means that the program would sleep for ever.
    std::size_t pendingTimers() const;

private:
    std::mutex mutex_;
    std::deque<Task> posted_;
    std::multimap<std::chrono::milliseconds, std::weak_ptr<const Task>> timers_;
    std::atomic<std::chrono::milliseconds> elapsed_{std::chrono::milliseconds{0}};
};

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
