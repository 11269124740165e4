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
    std::string identifier{}; ///< this occurrence's, which stays when it is moved
    std::optional<std::string> title{};
    std::string location{};
    Date start{};
    Date end{};
    bool isAllDay = false; ///< `start` is a midnight where this machine is

    /// Whether any of it lies between two moments.
    bool touches(Date from, Date to) const { return start < to && (end > from || start >= from); }

    friend bool operator==(const CalendarEvent&, const CalendarEvent&) = default;
};

/// What the calendars held when they were last looked at.
struct CalendarReading {
    std::vector<CalendarEvent> events{};
    bool isWhole = true; ///< otherwise some could not be read, for which stands what they told last
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

    /// Touches the user's folders: not for the main thread.
    virtual Authorization authorizationStatus() const = 0;

    /// The user lets events be read, until that is taken back. From the thread that takes it back.
    virtual void permit() = 0;

    /// Looks whether there is anything to read; without the user's leave the answer is no. It may take many
    /// seconds: not for the main thread. May call back on any thread.
    virtual void requestFullAccess(Completion completion) = 0;

    /// Gives the leave back. A reading under way ends at once, with nothing.
    virtual void relinquishAccess() = 0;

    /// The events of all calendars that touch the time between two moments and are wanted, by their start.
    /// Nothing without leave; what could not be read the log says. May take many seconds: not for the main
    /// thread. `isWanted` is asked meanwhile, so that the others take no memory; it is to be always the same.
    virtual std::optional<CalendarReading> events(Date from, Date to, const Predicate& isWanted) = 0;
};

} // namespace velmora
