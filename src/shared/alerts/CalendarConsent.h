// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "alerts/CalendarContextManager.h"
#include "platform/Preferences.h"

#include <memory>

namespace velmora {

/// The user's word that Velmora may read the calendars, which is a preference. With it access is asked for at
/// the start, and again whenever calendars have come or gone, which is looked at each half hour. Taking it
/// back ends all reading. Main thread only.
class CalendarConsent {
    CalendarContextManager& calendar_;
    std::shared_ptr<Preferences> preferences_;
    std::shared_ptr<MainLoop> loop_;

public:
    /// `calendar` must outlive this.
    explicit CalendarConsent(CalendarContextManager& calendar);
    CalendarConsent(const CalendarConsent&) = delete;
    CalendarConsent& operator=(const CalendarConsent&) = delete;

    Observable<bool> isGiven;

    /// The user looks: scans, and looks for calendars where there were none.
    void lookNow();

private:
    void follow();

    MainLoop::Timer later_;
};

} // namespace velmora
