// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cassert>
#include <thread>

namespace velmora {

/// Stops a debug build that calls an object on another thread than the one that made it. Costs nothing in a
/// release build.
class ThreadChecker {
public:
    void check() const { assert(std::this_thread::get_id() == owner_ && "called on the wrong thread"); }

#ifndef NDEBUG
private:
    std::thread::id owner_ = std::this_thread::get_id();
#endif
};

} // namespace velmora
