// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/ProviderThread.h"

#include <pthread.h>
#include <system_error>
#include <thread>
#include <utility>

namespace velmora {

// -- A conversation

bool Conversation::begin(std::unique_ptr<OpenIDClient> client)
{
    const MutexLock lock(mutex_);
    client_ = std::move(client);
    return !isCancelled_;
}

bool Conversation::cancel()
{
    {
        const MutexLock lock(mutex_);
        if (isOver_) return false;
        isCancelled_ = true;
    }
    interrupt();
    return true;
}

bool Conversation::commit()
{
    const MutexLock lock(mutex_);
    isCommitted_ = !isCancelled_;
    return isCommitted_;
}

void Conversation::answered()
{
    const MutexLock lock(mutex_);
    isCommitted_ = false;
}

bool Conversation::giveWay()
{
    {
        const MutexLock lock(mutex_);
        if (isCommitted_) return false;
        if (isOver_) return true;
        isCancelled_ = true;
    }
    interrupt();
    return true;
}

void Conversation::interrupt()
{
    mutex_.lock();
    const auto client = client_;
    mutex_.unlock();
    if (client) client->cancel();
}

bool Conversation::finish()
{
    const MutexLock lock(mutex_);
    isOver_ = true;
    return !isCancelled_;
}

// -- The thread

bool ProviderThread::run(Urgency urgency, Task task)
try {
    std::shared_ptr<Conversation> current;
    {
        const MutexLock lock(mutex_);
        if (!isAtWork_) std::thread([self = shared_from_this()] { self->work(); }).detach();
        isAtWork_ = true;
        waiting_.emplace(urgency, std::move(task));
        current = current_.lock();
    }
    if (urgency == Urgency::person && current && current->urgency() > urgency) current->giveWay();
    return true;
} catch (const std::system_error&) {
    return false;
}

void ProviderThread::work()
{
    pthread_setname_np(pthread_self(), name_);
    mutex_.lock();
    while (!waiting_.empty()) {
        auto next = waiting_.extract(waiting_.begin());
        mutex_.unlock();
        next.mapped()();
        next = {}; // what it holds goes outside of the lock
        mutex_.lock();
    }
    isAtWork_ = false;
    mutex_.unlock();
    changed_.notifyAll();
}

bool ProviderThread::enter(const std::shared_ptr<Conversation>& conversation)
{
    const MutexLock lock(mutex_);
    current_ = conversation;
    return !isEnding_ && (conversation->urgency() == Urgency::person || !waiting_.contains(Urgency::person));
}

bool ProviderThread::isEnding() const
{
    const MutexLock lock(mutex_);
    return isEnding_;
}

bool ProviderThread::isDone(std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    const MutexLock lock(mutex_);
    while (isAtWork_)
        if (!changed_.waitUntil(mutex_, deadline)) return !isAtWork_;
    return true;
}

bool ProviderThread::end()
{
    std::shared_ptr<Conversation> current;
    {
        const MutexLock lock(mutex_);
        isEnding_ = true;
        current = current_.lock();
    }
    const bool isAnswerAwaited = current && !current->giveWay();
    if (isDone(isAnswerAwaited ? patience : moment)) return true;
    if (current) current->cancel();
    return false;
}

} // namespace velmora
