// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "state/UserSettings.h"

#include <algorithm>

namespace velmora {

UserSettings::UserSettings(const Entries& entries)
{
    for (const auto& [user, settings] : entries) set(user, settings);
}

ChargingSettings UserSettings::of(uid_t user)
{
    const auto found = std::ranges::find(entries_, user, &Entries::value_type::first);
    if (found == entries_.end()) return {};
    std::rotate(found, found + 1, entries_.end());
    return entries_.back().second;
}

void UserSettings::set(uid_t user, const ChargingSettings& settings)
{
    std::erase_if(entries_, [user](const auto& one) { return one.first == user; });
    const auto own = combined({}, settings, settingsOf(Setting::Owner::user));
    if (own == ChargingSettings{}) return;
    if (entries_.size() >= maximumUsers) entries_.erase(entries_.begin());
    entries_.emplace_back(user, own);
}

} // namespace velmora
