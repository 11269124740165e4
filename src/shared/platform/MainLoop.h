// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace velmora {

/// The thread that owns everything observable, and its timers.
class MainLoop {
public:
    using Task = std::function<void()>;
    using Timer = std::shared_ptr<const void>; ///< keep it to be called, drop it to cancel

    virtual ~MainLoop() = default;

    /// Runs `task` on the loop's thread, after all that was posted before it. May be called from any thread.
    virtual void post(Task task) = 0;

    /// Runs `task` once, `delay` from now, at most `slack` later than that (so that the machine can sleep
    /// through several timers at once); never from inside this call, not even for a delay of zero. Loop's
    /// thread only.
    [[nodiscard]] virtual Timer after(std::chrono::milliseconds delay, Task task,
                                      std::chrono::milliseconds slack = std::chrono::milliseconds{0}) = 0;

    /// Runs `task` every `interval`, first one interval from now, until the timer is dropped. Loop's thread
    /// only.
    [[nodiscard]] Timer every(std::chrono::milliseconds interval, Task task,
                              std::chrono::milliseconds slack = std::chrono::milliseconds{0});
};

} // namespace velmora
