// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <libical/ical.h>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace velmora {

/// Turns what calendars write, a time on the clock of some place, into moments. It switches the process's own
/// time zone (TZ) to do so, since the C library's data is the system's and always the newest: for a process
/// with one thread, whose zone is this machine's again when the object goes.
class Wall {
public:
    Wall();
    ~Wall();
    Wall(const Wall&) = delete;
    Wall& operator=(const Wall&) = delete;

    /// Forgets the zones that a file has defined; others may mean another zone by the same name.
    void beginFile() { custom_.clear(); }
    /// A VTIMEZONE component of a file, as it stands there. It counts for names that are not exactly one of
    /// the system's; one that would take long to work out is left aside.
    void define(const std::string& component);

    /// `zone` is a TZID, empty for none. A date is its midnight on this machine; a time without a zone, or
    /// with one that nobody knows, is this machine's.
    Date moment(const icaltimetype& time, const std::string& zone);

    /// The date on this machine, as "20260705".
    std::string dayOf(Date moment);

    /// The midnight on this machine that many days after another.
    Date daysLater(Date midnight, int days);

private:
    using Zone = std::shared_ptr<icaltimezone>;

    void switchTo(const std::string& zone);
    Date systemMoment(const icaltimetype& time, const std::string& zone);

    std::string home_; ///< TZ, where it is set
    bool isHomeSet_ = false;
    std::string current_;
    std::map<std::string, std::string, std::less<>> names_; ///< TZID to the system's name, or to nothing
    std::map<std::string, Zone, std::less<>> custom_;
};

} // namespace velmora
