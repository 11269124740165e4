// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Mutex.h"

#include <optional>
#include <utility>

namespace velmora {

/// A place where one thread leaves a value for another, of which only the newest counts. Any thread.
template <typename Value>
class LatestValue {
public:
    /// Whether the place was empty: nobody is on the way yet to take what is there.
    bool put(Value value)
    {
        const MutexLock lock(mutex_);
        return !std::exchange(value_, std::move(value)).has_value();
    }

    std::optional<Value> take()
    {
        const MutexLock lock(mutex_);
        return std::exchange(value_, std::nullopt);
    }

private:
    Mutex mutex_;
    std::optional<Value> value_ VELMORA_GUARDED_BY(mutex_);
};

} // namespace velmora
