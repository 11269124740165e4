// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ManualLoop.h"

#include <algorithm>

namespace velmora {

void ManualLoop::post(Task task)
{
    const std::lock_guard guard(mutex_);
    posted_.push_back(std::move(task));
}

MainLoop::Timer ManualLoop::after(std::chrono::milliseconds delay, Task task, std::chrono::milliseconds)
{
    auto kept = std::make_shared<const Task>(std::move(task));
    timers_.emplace(elapsed() + std::max(delay, std::chrono::milliseconds{0}), kept);
    return kept;
}

void ManualLoop::advance(std::chrono::milliseconds time)
{
    const auto end = elapsed() + time;
    runPosted();
    while (!timers_.empty() && timers_.begin()->first <= end) {
        const auto due = timers_.extract(timers_.begin());
        elapsed_ = std::max(elapsed(), due.key());
        if (const auto task = due.mapped().lock()) (*task)();
        runPosted();
    }
    elapsed_ = end;
}

bool ManualLoop::runPosted()
{
    for (bool any = false;; any = true) {
        Task task;
        {
            const std::lock_guard guard(mutex_);
            if (posted_.empty()) return any;
            task = std::move(posted_.front());
            posted_.pop_front();
        }
        task();
    }
}

std::size_t ManualLoop::pendingTimers() const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(timers_, [](const auto& timer) { return !timer.second.expired(); }));
}

} // namespace velmora
