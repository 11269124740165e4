// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/Complaints.h"

#include <utility>

namespace velmora {

bool Complaints::raise(const std::string& cause, const std::string& text)
{
    const News news = take(cause);
    if (news == News::cause) log_.warning(category_, text);
    if (news == News::tooMany) {
        log_.warning(category_, "More than " + std::to_string(capacity_) +
                                    " different problems at once; further ones are not logged.");
    }
    return news == News::cause;
}

Complaints::News Complaints::take(const std::string& cause)
{
    const MutexLock lock(mutex_);
    if (known_.contains(cause)) return News::none;
    if (known_.size() >= capacity_) return std::exchange(isFull_, true) ? News::none : News::tooMany;
    known_.insert(cause);
    return News::cause;
}

void Complaints::settle(const std::string& cause)
{
    const MutexLock lock(mutex_);
    if (known_.erase(cause) > 0) isFull_ = false;
}

} // namespace velmora
