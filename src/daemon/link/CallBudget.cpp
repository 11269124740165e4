// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/CallBudget.h"

namespace velmora {

bool CallBudget::spend(uid_t user, Time now)
{
    const auto time = std::chrono::duration_cast<TokenBucket::Time>(now.time_since_epoch());
    std::erase_if(users_, [&](const auto& one) { return one.second.isFull(time); });
    return users_.try_emplace(user, atOnce, refill).first->second.spend(time);
}

} // namespace velmora
