// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Await.h"

#include <thread>

namespace velmora {

bool await(const std::function<bool()>& condition, Nanoseconds patience)
{
    using Clock = std::chrono::steady_clock;
    for (const auto begun = Clock::now(); !condition();) {
        if (Clock::now() - begun > patience) return false;
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    return true;
}

} // namespace velmora
