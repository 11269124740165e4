// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/WorkerThread.h"

#include <pthread.h>
#include <string>

namespace velmora {

WorkerThread::WorkerThread(std::string_view label)
    : name_(label.substr(label.size() > 15 ? label.size() - 15 : 0))
{
}

WorkerThread::~WorkerThread()
{
    {
        const std::lock_guard guard(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
}

void WorkerThread::async(Task task)
{
    {
        const std::lock_guard guard(mutex_);
        tasks_.push_back(std::move(task));
        if (!thread_.joinable()) thread_ = std::thread([this] { work(); });
    }
    changed_.notify_all();
}

bool WorkerThread::finish(std::chrono::milliseconds patience)
{
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [this] { return tasks_.empty() && !busy_; });
}

void WorkerThread::work()
{
    pthread_setname_np(pthread_self(), name_.c_str());
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return ending_ || !tasks_.empty(); });
        if (tasks_.empty()) return;
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        busy_ = true;
        lock.unlock();
        task();
        task = nullptr; // what it holds goes before it counts as done
        lock.lock();
        busy_ = false;
        changed_.notify_all();
    }
}

} // namespace velmora
