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
        Manager::detectionInterval, [this] { askAgain(); }, Manager::detectionSlack);
}

/// Asked although nothing has changed, it would be a line in the log each time.
void CalendarConsent::askAgain()
{
    if (isReadable() != calendar_.calendarAccessGranted.get()) calendar_.requestAccess();
}

bool CalendarConsent::isReadable() const
{
    return calendar_.authorizationStatus() == CalendarStore::Authorization::fullAccess;
}

void CalendarConsent::lookNow()
{
    if (!isGiven.get()) return;
    if (isReadable() && calendar_.calendarAccessGranted.get())
        calendar_.checkSoon();
    else
        calendar_.requestAccess();
}

} // namespace velmora
