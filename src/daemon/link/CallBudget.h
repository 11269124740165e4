// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/TokenBucket.h"

#include <map>
#include <sys/types.h>

namespace velmora {

/// How often one user may ask for what costs much to answer: a few times at once, then now and then. By user
/// rather than by connection, since a connection costs a client nothing.
class CallBudget {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr int atOnce = 20;
    static constexpr std::chrono::milliseconds refill{500}; ///< for one more

    /// Whether `user` may ask at the time `now`, which is then counted.
    bool spend(uid_t user, Time now);

private:
    std::map<uid_t, TokenBucket> users_; ///< those who have asked lately
};

} // namespace velmora
