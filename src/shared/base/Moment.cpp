// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Moment.h"

#include "base/Saturate.h"

#include <array>
#include <ctime>

namespace velmora {

namespace {

using Split = tm* (*)(const time_t*, tm*);

std::string timeText(Date date, Split split, const char* format)
{
    const time_t seconds = truncated(date.unixSeconds());
    tm parts{};
    if (!split(&seconds, &parts) || parts.tm_year > 9999 - 1900) return {};
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

} // namespace

std::string localTime(Date date)
{
    return timeText(date, localtime_r, "%Y-%m-%d %H:%M");
}

std::string utcTime(Date date)
{
    return timeText(date, gmtime_r, "%Y-%m-%dT%H:%M:%SZ");
}

} // namespace velmora
