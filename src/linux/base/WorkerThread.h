// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Mutex.h"
#include "platform/WorkQueue.h"

#include <chrono>
#include <deque>
#include <string>
#include <string_view>
#include <thread>

namespace velmora {

/// A serial queue on one thread, which starts with the first task and ends, work done, with the
/// queue.
class WorkerThread final : public WorkQueue {
public:
    /// The kernel shows the last 15 characters of `label` as the thread's name.
    explicit WorkerThread(std::string_view label);
    ~WorkerThread() override;

    void async(Task task) override;

    /// Whether all that was given is done; waits for it at most `patience`.
    bool finish(std::chrono::milliseconds patience);

private:
    void work();

    std::string name_;
    Mutex mutex_;
    Condition changed_;
    std::deque<Task> tasks_ VELMORA_GUARDED_BY(mutex_);
    bool busy_ VELMORA_GUARDED_BY(mutex_) = false;
    bool ending_ VELMORA_GUARDED_BY(mutex_) = false;
    std::thread thread_; ///< made under mutex_, joined by the destructor
};

} // namespace velmora
