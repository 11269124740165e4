// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ical/EventReader.h"

#include <optional>
#include <string>

namespace velmora {

/// What the programs that read calendars have in common: they are run by another program with a stretch of
/// time, tell on standard output what they find (wire/CalendarReport.h), and end. They bound themselves in
/// time, since they read what strangers wrote, and end with the program that runs them.
class Helper {
public:
    struct Span {
        Date from;
        Date to;
    };
    /// The stretch of time that the first two arguments say, in seconds since 1970; nothing where they do
    /// not.
    static std::optional<Span> spanOf(int argc, char** argv);

    /// Limits the process from here on. First thing in `main`.
    static void confineProcess(unsigned seconds);
    /// What is being read, to be named should time be up.
    static void setSubject(const std::string& subject);

    explicit Helper(Span span) : reader_(span.from, span.to) {}

    /// Adds the events of a text; `subject` says whose it is.
    void read(const std::string& subject, const std::string& text);
    void complain(const std::string& problem);

    /// Writes all that was found. The exit status.
    int finish(std::size_t calendars);

private:
    EventReader reader_;
    int problems_ = 0;
};

} // namespace velmora
