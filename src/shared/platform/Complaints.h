// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Log.h"

#include <map>
#include <mutex>
#include <string>

namespace velmora {

/// Says once what is wrong, however often it is met: one log line a cause, and none again until the cause was
/// seen to be gone. Keeps at most `capacity` causes; past that it stays silent rather than fill the log. Any
/// thread.
class Complaints {
public:
    Complaints(Log& log, std::string category, std::size_t capacity = 256)
        : log_(log), category_(std::move(category)), capacity_(capacity)
    {
    }

    /// Logs `text` as a warning if `cause` is new. Returns whether it did.
    bool raise(const std::string& cause, const std::string& text)
    {
        const std::lock_guard guard(mutex_);
        if (known_.size() >= capacity_ || !known_.emplace(cause, text).second) return false;
        log_.warning(category_, text);
        return true;
    }

    /// The cause is gone; should it come back it is worth a line again.
    void settle(const std::string& cause)
    {
        const std::lock_guard guard(mutex_);
        known_.erase(cause);
    }

private:
    Log& log_;
    std::string category_;
    std::size_t capacity_;
    std::mutex mutex_;
    std::map<std::string, std::string> known_;
};

} // namespace velmora
