// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <functional>

namespace velmora {

/// A serial queue for work that must not block the main thread.
class WorkQueue {
public:
    using Task = std::function<void()>;

    /// Finishes all tasks, then returns.
    virtual ~WorkQueue() = default;

    /// Runs `task` on the queue's thread. May be called from any thread; returns at once.
    virtual void async(Task task) = 0;
};

} // namespace velmora
