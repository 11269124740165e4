// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Mutex.h"
#include "platform/Log.h"

#include <set>
#include <string>

namespace velmora {

/// Logs each problem once, however often it occurs: one line a cause, and none again until the cause is
/// settled. Keeps at most `capacity` causes; past that one line says that further ones are not
/// logged, until a cause is gone. Any thread.
class Complaints {
public:
    Complaints(Log& log, std::string category, std::size_t capacity = 256)
        : log_(log), category_(std::move(category)), capacity_(capacity)
    {
    }

    /// Logs `text` as a warning if `cause` is new. Returns whether it did.
    bool raise(const std::string& cause, const std::string& text);

    /// The cause is gone; if it comes back, it is logged again.
    void settle(const std::string& cause);

private:
    enum class News { none, cause, tooMany };
    News take(const std::string& cause);

    Log& log_;
    std::string category_;
    std::size_t capacity_;
    Mutex mutex_; // not held while logging: a log may block
    std::set<std::string> known_ VELMORA_GUARDED_BY(mutex_);
    bool isFull_ VELMORA_GUARDED_BY(mutex_) = false; ///< and that was logged
};

} // namespace velmora
