// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"

#include <chrono>
#include <gtest/gtest.h>

namespace velmora {

/// A test of what happens on a real loop, in its own time.
class LoopTest : public testing::Test {
protected:
    EventLoop loop;

    virtual void serve() { loop.runOnce(std::chrono::milliseconds{5}); }

    /// Serves the loop until `condition` holds; false where it never does.
    template <typename Condition>
    bool eventually(Condition condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{20};
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            serve();
        }
        return true;
    }
};

} // namespace velmora
