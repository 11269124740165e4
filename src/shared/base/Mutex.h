// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

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
    std::mutex mutex_;
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
