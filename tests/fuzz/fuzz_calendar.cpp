// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ical/EventReader.h"
#include "wire/CalendarReport.h"

#include <cstdint>
#include <cstdlib>

using namespace velmora;

/// Whatever a calendar file holds, reading it ends; what is found touches the day that was asked for, and
/// comes through the pipe. The same bytes as a helper's report are read without harm.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    const Date from = Date::fromUnix(1'783'209'600); // 2026-07-05 00:00 UTC
    const Date to = from + duration::day;
    EventReader events(from, to);
    events.read(text);
    wire::calendar::Reader report;
    for (const auto& event : events.events()) {
        if (event.start >= to || event.end < from || event.end < event.start) std::abort();
        report.take(wire::calendar::line(event));
    }
    report.take(wire::calendar::endLine(1));
    if (!report.isWhole() || report.events().size() != events.events().size()) std::abort();
    wire::calendar::Reader hostile;
    hostile.take(text);
    wire::calendar::tidy(hostile.events());
    return 0;
}
