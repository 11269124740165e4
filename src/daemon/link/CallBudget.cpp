// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/CallBudget.h"

#include <algorithm>

namespace velmora {

bool CallBudget::spend(uid_t user, Time now)
{
    std::erase_if(spentUntil_, [&](const auto& one) { return one.second <= now; });
    Time& until = spentUntil_.try_emplace(user, now).first->second;
    if (until + refill - now > atOnce * refill) return false;
    until += refill;
    return true;
}

} // namespace velmora
