// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <functional>

namespace velmora {

/// Work that must not hold up the main thread, done one task after the other in the order given.
class WorkQueue {
public:
    using Task = std::function<void()>;

    /// Finishes what was given, then returns.
    virtual ~WorkQueue() = default;

    /// Runs `task` on the queue's own thread. May be called from any thread; returns at once.
    virtual void async(Task task) = 0;
};

} // namespace velmora
