// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Observable.h"
#include "platform/Preferences.h"
#include "platform/SystemVersion.h"

#include <memory>

namespace velmora {

/// The notice for systems that have a charge limiter themselves: shown whenever Velmora's main window
/// appears, until the user has answered it once. Main thread only.
class VersionNotice {
    std::shared_ptr<Preferences> preferences_;
    SystemVersion system_;

public:
    /// Every assignment is remembered.
    Observable<bool> hasSeenMacOS264Banner;
    /// A window shows the notice while this is true, and sets it to false when the notice closes, in whatever
    /// way.
    Observable<bool> showMacOS264Banner{false};

    /// On the current platform.
    VersionNotice();
    VersionNotice(const VersionNotice&) = delete;
    VersionNotice& operator=(const VersionNotice&) = delete;

    /// The main window has appeared.
    void appeared();

    /// The notice was answered: it does not come again.
    void dismissed() { hasSeenMacOS264Banner.set(true); }
};

} // namespace velmora
