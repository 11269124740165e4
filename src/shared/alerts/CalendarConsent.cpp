// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "alerts/CalendarConsent.h"

#include "platform/Platform.h"

namespace velmora {

CalendarConsent::CalendarConsent(CalendarContextManager& calendar)
    : calendar_(calendar),
      preferences_(Platform::current().preferences),
      loop_(Platform::current().mainLoop),
      isGiven(preferences_->boolean(preference_key::isCalendarConsentGiven), nullptr, [this] {
          preferences_->set(preference_key::isCalendarConsentGiven, isGiven.get());
          follow();
      })
{
    if (isGiven.get()) follow();
}

void CalendarConsent::follow()
{
    if (!isGiven.get()) {
        later_.reset();
        return calendar_.endAccess();
    }
    calendar_.requestAccess();
    using Manager = CalendarContextManager;
    later_ = loop_->every(
        Manager::detectionInterval, [this] { calendar_.followAccess(); }, Manager::detectionSlack);
}

void CalendarConsent::lookNow()
{
    if (!isGiven.get()) return;
    calendar_.followAccess();
    if (calendar_.calendarAccessGranted.get()) calendar_.checkSoon();
}

} // namespace velmora
