// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/WorkQueue.h"

#include <deque>
#include <memory>
#include <mutex>

namespace velmora {

/// A work queue that works when told to, on the thread that tells it; or at once, where `inlineWork` is set.
class ManualQueue final : public WorkQueue {
public:
    bool inlineWork = false;
    int given = 0; ///< tasks so far

    ~ManualQueue() override { run(); }

    void async(Task task) override
    {
        {
            const std::lock_guard guard(mutex_);
            ++given;
        }
        if (inlineWork) return task();
        const std::lock_guard guard(mutex_);
        tasks_.push_back(std::move(task));
    }

    /// Does all that was given, and what that gives. Returns whether there was anything. One thread at a
    /// time.
    bool run()
    {
        for (bool any = false;; any = true) {
            Task task;
            {
                const std::lock_guard guard(mutex_);
                if (tasks_.empty()) return any;
                task = std::move(tasks_.front());
                tasks_.pop_front();
            }
            task();
        }
    }

    /// What a `Platform` hands out: a queue whose tasks wait in `shared`, and are done when the handle goes.
    static std::unique_ptr<WorkQueue> handle(std::shared_ptr<ManualQueue> shared)
    {
        struct Handle final : WorkQueue {
            std::shared_ptr<ManualQueue> queue;
            explicit Handle(std::shared_ptr<ManualQueue> theQueue) : queue(std::move(theQueue)) {}
            ~Handle() override { queue->run(); }
            void async(Task task) override { queue->async(std::move(task)); }
        };
        return std::make_unique<Handle>(std::move(shared));
    }

private:
    std::mutex mutex_;
    std::deque<Task> tasks_;
};

} // namespace velmora
