// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/CallerMemory.h"

#include <algorithm>

namespace velmora {

namespace {
/// More connections at once than the system bus grants a user.
constexpr std::size_t mostCallers = 512;
} // namespace

CallerMemory::LastMessages& CallerMemory::of(std::string_view caller)
{
    const auto found = std::ranges::find(callers_, caller, &std::pair<std::string, LastMessages>::first);
    if (found != callers_.end()) return found->second;
    if (callers_.size() >= mostCallers) callers_.erase(callers_.begin());
    return callers_.emplace_back(std::string(caller), LastMessages{}).second;
}

void CallerMemory::forget(std::string_view caller)
{
    std::erase_if(callers_, [caller](const auto& one) { return one.first == caller; });
}

std::vector<std::pair<std::string, ChargingSettings>> CallerMemory::accepted() const
{
    std::vector<std::pair<std::string, ChargingSettings>> result;
    for (const auto& [caller, last] : callers_) {
        if (last.accepted) result.emplace_back(caller, *last.accepted);
    }
    return result;
}

std::vector<std::string> CallerMemory::connectionsOf(uid_t user) const
{
    std::vector<std::string> result;
    for (const auto& [caller, last] : callers_) {
        if (last.user == user) result.push_back(caller);
    }
    return result;
}

} // namespace velmora
