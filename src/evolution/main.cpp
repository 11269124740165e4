// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "EvolutionCalendars.h"
#include "program/Helper.h"

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using velmora::Date;
using velmora::Helper;

constexpr unsigned patience = 40;                // seconds; the first question starts the service
constexpr std::size_t maximumBytes = 64U << 20U; // of all calendars
constexpr std::array<char, 2> marks{'C', 'P'};   // a calendar, a problem

/// To the reader: mark, name and text, each with a NUL at its end.
void tell(std::FILE* pipe, char mark, const std::string& name, const std::string& text)
{
    std::fputc(mark, pipe);
    for (const auto* part : {&name, &text}) std::fwrite(part->c_str(), 1, part->size() + 1, pipe);
}

/// Asks the service, in a process of its own: its library has threads, and what reads the events changes the
/// time zone of a process.
[[noreturn]] void fetch(int output, Date from, Date to)
{
    Helper::confineProcess(patience);
    std::FILE* pipe = fdopen(output, "w");
    if (!pipe) _exit(1);
    bool isAnswered = true;
    try {
        velmora::evolution::readCalendars(
            from, to,
            {.calendar = [&](const auto& name, const auto& text) { tell(pipe, marks[0], name, text); },
             .problem = [&](const auto& problem) { tell(pipe, marks[1], problem, ""); }});
    } catch (const std::runtime_error& failure) {
        tell(pipe, marks[1], std::string("Evolution Data Server does not answer: ") + failure.what() + ".",
             "");
        isAnswered = false;
    }
    _exit(std::fclose(pipe) == 0 && isAnswered ? 0 : 1);
}

/// Whether all of it came.
bool receive(int input, pid_t child, std::string& bytes)
{
    std::array<char, 65'536> buffer{};
    ssize_t count = 0;
    while ((count = read(input, buffer.data(), buffer.size())) > 0 && bytes.size() < maximumBytes)
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    close(input);
    int status = 0;
    waitpid(child, &status, 0);
    return count == 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Takes one text from the front; what has no end is none.
std::string takeText(std::string_view& bytes)
{
    const auto end = bytes.find('\0');
    if (end == bytes.npos) {
        bytes = {};
        return {};
    }
    std::string text(bytes.substr(0, end));
    bytes.remove_prefix(end + 1);
    return text;
}

std::size_t readAll(Helper& helper, std::string_view bytes)
{
    std::size_t calendars = 0;
    while (!bytes.empty()) {
        const char mark = bytes.front();
        bytes.remove_prefix(1);
        const auto name = takeText(bytes);
        const auto text = takeText(bytes);
        if (mark == marks[1]) {
            helper.complain(name);
        } else {
            helper.read(name, text);
            ++calendars;
        }
    }
    return calendars;
}

} // namespace

/// velmora-calendar-eds FROM TO : tells the events between two moments (seconds since 1970) that the
/// calendars of Evolution Data Server have.
int main(int argc, char** argv)
{
    Helper::confineProcess(patience);
    const auto span = Helper::spanOf(argc, argv);
    if (!span) {
        std::fputs("usage: velmora-calendar-eds FROM TO\n", stderr);
        return 2;
    }
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return 1;
    const pid_t child = fork();
    if (child < 0) return 1;
    if (child == 0) {
        close(ends[0]);
        fetch(ends[1], span->from, span->to);
    }
    close(ends[1]);
    std::string bytes;
    const bool isAll = receive(ends[0], child, bytes);
    Helper helper(*span);
    const auto calendars = readAll(helper, bytes);
    if (isAll) return helper.finish(calendars);
    std::fflush(stdout); // what was wrong
    return 1;
}
