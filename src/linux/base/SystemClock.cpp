// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/SystemClock.h"

#include <ctime>

namespace velmora {

Date SystemClock::now() const
{
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    return Date::fromUnix(static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9);
}

std::chrono::milliseconds SystemClock::sinceBoot() const
{
    timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::milliseconds(time.tv_sec * 1000 + time.tv_nsec / 1'000'000);
}

} // namespace velmora
