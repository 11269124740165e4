// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <functional>
#include <string>

namespace velmora::evolution {

struct Sink {
    /// The events of one calendar that may touch the time, as iCalendar text, with the zones that they name.
    std::function<void(const std::string& calendar, const std::string& text)> calendar;
    std::function<void(const std::string& problem)> problem;
};

/// Asks Evolution Data Server for all enabled calendars but those that others fill, as with birthdays. What
/// is moved or called off comes with its event. Blocks, for as long as the service takes; the library starts
/// threads. Throws std::runtime_error where the service is not there.
void readCalendars(Date from, Date to, const Sink& sink);

} // namespace velmora::evolution
