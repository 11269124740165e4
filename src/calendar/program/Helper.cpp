// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "program/Helper.h"

#include "wire/CalendarReport.h"

#include <array>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace velmora {

namespace {

/// A line that is ready for a signal's handler, which may do little.
std::array<char, wire::calendar::maximumLineBytes> lastWords{};
volatile std::sig_atomic_t lastWordsBytes = 0;

void timeIsUp(int)
{
    const auto written = write(STDOUT_FILENO, lastWords.data(), static_cast<std::size_t>(lastWordsBytes));
    _exit(written < 0 ? 2 : 1);
}

std::optional<Date> dateOf(std::string_view text)
{
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    constexpr std::int64_t farthest = 32'503'680'000; // the year 3000
    if (error != std::errc{} || end != text.data() + text.size() || seconds < 0 || seconds > farthest)
        return std::nullopt;
    return Date::fromUnix(static_cast<double>(seconds));
}

} // namespace

std::optional<Helper::Span> Helper::spanOf(int argc, char** argv)
{
    const auto from = argc > 2 ? dateOf(argv[1]) : std::nullopt;
    const auto to = argc > 2 ? dateOf(argv[2]) : std::nullopt;
    if (!from || !to || *to < *from) return std::nullopt;
    return Span{*from, *to};
}

void Helper::confineProcess(unsigned seconds)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    const rlimit none{1, 1};       // at 0 a program would still be handed the image
    setrlimit(RLIMIT_CORE, &none); // a calendar is nobody else's business
    setpriority(PRIO_PROCESS, 0, 10);
    setSubject("the calendars");
    std::signal(SIGALRM, timeIsUp);
    alarm(seconds);
}

void Helper::setSubject(const std::string& subject)
{
    const auto line = wire::calendar::problemLine("Reading " + subject + " takes too long and was given up.");
    lastWordsBytes = 0; // half a line is none
    std::memcpy(lastWords.data(), line.data(), line.size());
    lastWordsBytes = static_cast<std::sig_atomic_t>(line.size());
}

void Helper::read(const std::string& subject, const std::string& text)
{
    setSubject(subject);
    if (const auto problem = reader_.read(text); !problem.empty())
        complain(subject + " is not understood in all: " + problem + ".");
}

void Helper::complain(const std::string& problem)
{
    if (++problems_ > static_cast<int>(wire::calendar::maximumProblems)) return;
    std::fputs(wire::calendar::problemLine(problem).c_str(), stdout);
}

int Helper::finish(std::size_t calendars)
{
    auto events = reader_.events();
    wire::calendar::tidy(events);
    for (const auto& event : events) std::fputs(wire::calendar::line(event).c_str(), stdout);
    std::fputs(wire::calendar::endLine(calendars).c_str(), stdout);
    return std::fflush(stdout) == 0 ? 0 : 1;
}

} // namespace velmora
