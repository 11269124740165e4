// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// Clang checks at compile time that what is VELMORA_GUARDED_BY a mutex is touched with it held only
// (-Wthread-safety); for other compilers these say nothing.
#if defined(__clang__)
#define VELMORA_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define VELMORA_THREAD_ATTRIBUTE(attribute)
#endif
#define VELMORA_GUARDED_BY(mutex) VELMORA_THREAD_ATTRIBUTE(guarded_by(mutex))
#define VELMORA_REQUIRES(mutex) VELMORA_THREAD_ATTRIBUTE(requires_capability(mutex))

namespace velmora {

/// A std::mutex that clang's thread-safety analysis understands.
class VELMORA_THREAD_ATTRIBUTE(capability("mutex")) Mutex {
public:
    void lock() VELMORA_THREAD_ATTRIBUTE(acquire_capability()) { mutex_.lock(); }
    void unlock() VELMORA_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }

private:
    friend class Condition;
    std::mutex mutex_;
};

/// A condition variable for a Mutex. Notify after unlocking the mutex: a thread that is woken before that has
/// to wait again for the mutex.
class Condition {
public:
    void wait(Mutex& mutex) VELMORA_REQUIRES(mutex)
    {
        std::unique_lock held(mutex.mutex_, std::adopt_lock);
        changed_.wait(held);
        held.release();
    }

    /// Whether it was notified before `deadline`.
    bool waitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline) VELMORA_REQUIRES(mutex)
    {
        std::unique_lock held(mutex.mutex_, std::adopt_lock);
        const bool isInTime = changed_.wait_until(held, deadline) == std::cv_status::no_timeout;
        held.release();
        return isInTime;
    }

    void notifyAll() { changed_.notify_all(); }

private:
    std::condition_variable changed_;
};

/// Holds a mutex to the end of its scope.
class VELMORA_THREAD_ATTRIBUTE(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex& mutex) VELMORA_THREAD_ATTRIBUTE(acquire_capability(mutex)) : mutex_(mutex)
    {
        mutex_.lock();
    }
    ~MutexLock() VELMORA_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& mutex_;
};

} // namespace velmora
