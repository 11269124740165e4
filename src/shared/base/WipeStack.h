// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>

namespace velmora {

/// Overwrites what functions that have returned left on this thread's stack: those that were called by who
/// calls this one and were not made part of it by the compiler ([[gnu::noinline]]).
[[gnu::noinline]] inline void wipeStack() noexcept
{
    constexpr std::size_t depth = 16 * 1024; // bytes; more than a library's buffers for texts
    // NOLINTNEXTLINE(modernize-avoid-c-arrays): another array has no volatile access
    [[maybe_unused]] volatile char left[depth];
    for (std::size_t i = 0; i < depth; ++i) left[i] = '\0';
}

} // namespace velmora
