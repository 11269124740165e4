// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "alerts/ChargeNotices.h"

#include "alerts/NotificationService.h"
#include "base/Translation.h"
#include "platform/Platform.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

using Kind = ChargeEvent::Kind;

constexpr double dipEndsAbove = 5; // percentage points above the limit

bool isWanted(Kind kind, const NoticeWishes& wishes)
{
    switch (kind) {
    case Kind::thermalPause:
        return wishes.onHeat;
    case Kind::powerSourceChanged:
        return wishes.onPowerChange;
    case Kind::cycleCompleted:
        return wishes.onCycle;
    default:
        return wishes.onLimit;
    }
}

void postCycle(std::int64_t count)
{
    NotificationService::shared().scheduleNotification(tr("Charge Cycle Completed"),
                                                       trn("The battery has been through %1 charge cycle.",
                                                           "The battery has been through %1 charge cycles.",
                                                           count),
                                                       "cycle_completed");
}

} // namespace

ChargeNotices::ChargeNotices(std::function<NoticeWishes()> wishes, std::function<bool()> isSessionActive)
    : wishes_(std::move(wishes)),
      isSessionActive_(std::move(isSessionActive)),
      preferences_(Platform::current().preferences),
      manager_(NotificationManager::shared())
{
}

void ChargeNotices::take(const ChargeEvent& event)
{
    const auto wishes = wishes_();
    if (event.kind == Kind::levelLost) return takeLoss(event.level, wishes);
    if (isWanted(event.kind, wishes) && isSessionActive_()) post(event);
}

/// A limit near 100 % is left by a full charge.
void ChargeNotices::takeLevel(double percentage)
{
    if (percentage >= std::min(wishes_().lowBatteryLimit + dipEndsAbove, 100.0)) setDipTold(false);
}

void ChargeNotices::takeLoss(std::int64_t level, const NoticeWishes& wishes)
{
    const auto percent = static_cast<double>(level);
    takeLevel(percent + 1); // where it was just before
    if (!wishes.onLowBattery || percent > wishes.lowBatteryLimit || isDipTold()) return;
    // Otherwise the dip is not told yet: the next point lost tries again.
    if (manager_.isAuthorized() && isSessionActive_()) tellDip();
}

/// A notice on its way counts, or a restart would tell the dip twice; one that is not taken does not.
void ChargeNotices::tellDip()
{
    setDipTold(true);
    manager_.tellLowBattery(lifetime_.guard([this](bool isTaken) {
        if (!isTaken) setDipTold(false);
    }));
}

void ChargeNotices::post(const ChargeEvent& event)
{
    switch (event.kind) {
    case Kind::chargingPaused:
        return manager_.sendChargingPausedNotice();
    case Kind::chargingResumed:
        return manager_.sendChargingResumedNotice();
    case Kind::thermalPause:
        return manager_.sendThermalNotice();
    case Kind::overrideCompleted:
        return manager_.sendOverrideCompleteNotice();
    case Kind::powerSourceChanged:
        return postSource(event.powerSource);
    case Kind::cycleCompleted:
        return postCycle(event.cycleCount);
    case Kind::levelLost:
        return; // has rules of its own
    }
}

/// A source without a name here would make an odd sentence, and is passed over.
void ChargeNotices::postSource(const std::string& powerSource)
{
    if (powerSource == "AC") manager_.sendPowerSourceNotice(tr("AC Power"));
    if (powerSource == "Battery") manager_.sendPowerSourceNotice(tr("Battery Power"));
}

bool ChargeNotices::isDipTold() const
{
    return preferences_->boolean(preference_key::isLowBatteryTold);
}

void ChargeNotices::setDipTold(bool isTold)
{
    if (isDipTold() != isTold) preferences_->set(preference_key::isLowBatteryTold, isTold);
}

} // namespace velmora
