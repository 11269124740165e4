// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "alerts/NotificationManager.h"
#include "base/Lifetime.h"
#include "platform/Preferences.h"
#include "wire/ChargeEvent.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace velmora {

/// Which notices of charging a person wants.
struct NoticeWishes {
    bool onLimit = true; ///< paused at the limit, resumed, quick charge completed
    bool onHeat = true;
    bool onCycle = false;
    bool onPowerChange = true;
    bool onLowBattery = true;
    double lowBatteryLimit = 20; ///< percent
};

/// Turns what the daemon tells all sessions into this person's notices: those that are wanted, and only while
/// this person's session is the one in use.
///
/// A low battery is told once a dip, at the first point lost at or below the person's limit; where the
/// desktop does not take the notice, or it is too early for another, the next point tries again. That is
/// remembered over a restart; the next dip begins once the level has been 5 points above the limit. Who
/// switches the notice on or raises the limit while below is told at the next point lost.
///
/// Main thread only.
class ChargeNotices {
    Lifetime lifetime_;

public:
    /// Makes the notification manager, so that the desktop is asked for leave before the first event.
    ChargeNotices(std::function<NoticeWishes()> wishes, std::function<bool()> isSessionActive);

    void take(const ChargeEvent& event);
    /// The battery is at so many percent: a charge may have ended the dip, with no event of its own.
    void takeLevel(double percentage);

private:
    void takeLoss(std::int64_t level, const NoticeWishes& wishes);
    void tellDip();
    void post(const ChargeEvent& event);
    void postSource(const std::string& powerSource);
    bool isDipTold() const;
    void setDipTold(bool isTold);

    std::function<NoticeWishes()> wishes_;
    std::function<bool()> isSessionActive_;
    std::shared_ptr<Preferences> preferences_;
    NotificationManager& manager_;
};

} // namespace velmora
