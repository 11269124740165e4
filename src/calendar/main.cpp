// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "files/CalendarFolders.h"
#include "program/Helper.h"

#include <cstdio>

/// velmora-calendar FROM TO FOLDER... : tells the events between two moments (seconds since 1970) that the
/// iCalendar files below the folders have.
int main(int argc, char** argv)
{
    constexpr unsigned patience = 40; // seconds, on a busy machine
    velmora::Helper::confineProcess(patience);
    const auto span = velmora::Helper::spanOf(argc, argv);
    if (!span) {
        std::fputs("usage: velmora-calendar FROM TO FOLDER...\n", stderr);
        return 2;
    }
    velmora::Helper helper(*span);
    velmora::CalendarFolders folders(
        {.file = [&](const auto& file, const auto& text) { helper.read(file.string(), text); },
         .problem = [&](const auto& problem) { helper.complain(problem); }});
    std::size_t calendars = 0;
    for (int i = 3; i < argc; ++i) calendars += folders.read(argv[i]) ? 1 : 0;
    return helper.finish(calendars);
}
