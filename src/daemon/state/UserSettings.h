// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/ChargingSettings.h"

#include <sys/types.h>
#include <utility>
#include <vector>

namespace velmora {

/// The settings that belong to each user rather than to the machine. A user who never changed one has the
/// defaults and takes no room; past `maximumUsers` the one longest unused loses theirs.
class UserSettings {
public:
    static constexpr std::size_t maximumUsers = 64;

    /// Longest unused first. Of each entry only the settings of Setting::Owner::user mean anything.
    using Entries = std::vector<std::pair<uid_t, ChargingSettings>>;

    explicit UserSettings(const Entries& entries = {});

    /// Counts as a use.
    ChargingSettings of(uid_t user);
    void set(uid_t user, const ChargingSettings& settings);

    const Entries& entries() const { return entries_; }

private:
    Entries entries_;
};

} // namespace velmora
