// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/WorkQueue.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace velmora {

/// A serial queue on a thread of its own, which starts with the first task and ends, work done, with the
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
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> tasks_; // this and the next two under mutex_
    bool busy_ = false;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace velmora
