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
        const MutexLock lock(mutex_);
        ending_ = true;
    }
    changed_.notifyAll();
    if (thread_.joinable()) thread_.join();
}

void WorkerThread::async(Task task)
{
    {
        const MutexLock lock(mutex_);
        tasks_.push_back(std::move(task));
        if (!thread_.joinable()) thread_ = std::thread([this] { work(); });
    }
    changed_.notifyAll();
}

bool WorkerThread::finish(std::chrono::milliseconds patience)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    const MutexLock lock(mutex_);
    while (busy_ || !tasks_.empty()) {
        if (!changed_.waitUntil(mutex_, deadline)) return tasks_.empty() && !busy_;
    }
    return true;
}

void WorkerThread::work()
{
    pthread_setname_np(pthread_self(), name_.c_str());
    const MutexLock lock(mutex_);
    while (true) {
        while (!ending_ && tasks_.empty()) changed_.wait(mutex_);
        if (tasks_.empty()) return;
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        busy_ = true;
        mutex_.unlock();
        task();
        task = nullptr; // what it holds goes before it counts as done
        mutex_.lock();
        busy_ = false;
        changed_.notifyAll();
    }
}

} // namespace velmora
