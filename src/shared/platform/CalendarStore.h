// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// One occurrence of an event. Texts are valid UTF-8 of one line, as their author wrote them.
struct CalendarEvent {
    std::string identifier{}; ///< the same for all occurrences of an event
    std::optional<std::string> title{};
    std::string location{};
    Date start{};
    Date end{};
    bool isAllDay = false; ///< `start` is a midnight where this machine is

    friend bool operator==(const CalendarEvent&, const CalendarEvent&) = default;
};

/// The user's calendars, as far as this machine has them. Any thread.
class CalendarStore {
public:
    enum class Authorization : std::uint8_t {
        notDetermined, ///< nobody has asked, or access was given back
        restricted,    ///< there are no calendars that could be read
        denied,
        fullAccess,
    };
    /// `error` says in words why there is no answer; absent for a plain yes or no.
    using Completion = std::function<void(bool isGranted, const std::optional<std::string>& error)>;

    using Predicate = std::function<bool(const CalendarEvent&)>;

    virtual ~CalendarStore() = default;

    virtual Authorization authorizationStatus() const = 0;

    /// Asks for leave to read events, which lasts until it is given back. May call back on any thread.
    virtual void requestFullAccess(Completion completion) = 0;

    /// Gives the leave back. A reading under way ends at once, with nothing.
    virtual void relinquishAccess() = 0;

    /// The events of all calendars that touch the time between two moments and are wanted, by their start.
    /// Nothing without leave, and where they could not be read, which the log then says. May take many
    /// seconds: not for the main thread. `isWanted` is asked meanwhile, so that the others take no memory.
    virtual std::optional<std::vector<CalendarEvent>> events(Date from, Date to,
                                                             const Predicate& isWanted) = 0;
};

} // namespace velmora
