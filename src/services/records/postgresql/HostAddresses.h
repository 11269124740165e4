// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace velmora::postgresql {

/// How long something may take.
struct Patience {
    std::chrono::steady_clock::time_point deadline;
    int interruption = -1; ///< a descriptor that is readable once nobody wants the answer any more
};

/// Thrown to end a request that nobody wants any more.
struct Interrupted {};

/// Waits until one of `events` (as poll(2) has them) is true of `descriptor`. False where the time is over.
/// Throws Interrupted.
bool waitFor(int descriptor, short events, const Patience& patience);

/// The addresses of a host, numeric ones, four at most, in the order of preference. A lookup cannot be broken
/// off: past the deadline its thread is left behind. Throws ServerFailure and Interrupted.
std::vector<std::string> addressesOf(const std::string& host, const Patience& patience);

} // namespace velmora::postgresql
