// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/VersionNotice.h"

#include "platform/Platform.h"

namespace velmora {

namespace {

/// Major and minor are compared separately: 27.0 to 27.3 do not qualify.
bool hasLimiter(SystemVersion system)
{
    return system.major >= 26 && system.minor >= 4;
}

} // namespace

VersionNotice::VersionNotice()
    : preferences_(Platform::current().preferences),
      system_(Platform::current().systemVersion),
      hasSeenMacOS264Banner(preferences_->boolean(preference_key::hasSeenVersionNotice), nullptr, [this] {
          preferences_->set(preference_key::hasSeenVersionNotice, hasSeenMacOS264Banner.get());
      })
{
}

void VersionNotice::appeared()
{
    if (!hasSeenMacOS264Banner.get() && hasLimiter(system_)) showMacOS264Banner.set(true);
}

} // namespace velmora
