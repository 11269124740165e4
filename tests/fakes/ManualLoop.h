// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

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

} // namespace velmora
