// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <compare>

namespace velmora {

/// Lengths of time in seconds, the unit of a Date.
namespace duration {
inline constexpr double minute = 60;
inline constexpr double hour = 60 * minute;
inline constexpr double day = 24 * hour;
inline constexpr double week = 7 * day;
inline constexpr double month = 30 * day;
} // namespace duration

/// A moment, as seconds from 2001-01-01 00:00:00 UTC. Files and the wire carry this double as it is, so that
/// a date written and read again is the same to the last bit.
struct Date {
    /// Seconds between 1970-01-01 and 2001-01-01, both 00:00:00 UTC.
    static constexpr double unixReference = 978'307'200.0;

    double sinceReference = 0;

    static constexpr Date fromUnix(double seconds) { return Date{seconds - unixReference}; }
    constexpr double unixSeconds() const { return sinceReference + unixReference; }

    friend constexpr double operator-(Date later, Date earlier)
    {
        return later.sinceReference - earlier.sinceReference;
    }
    friend constexpr Date operator+(Date date, double seconds) { return Date{date.sinceReference + seconds}; }
    friend constexpr auto operator<=>(Date, Date) = default; // NOLINT(modernize-use-nullptr): there is none
};

} // namespace velmora
