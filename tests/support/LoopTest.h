// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "bus/DBus.h"

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

    /// The answer to a call, be it an error; serves the loop until it is there.
    dbus::Message answer(sd_bus* bus, const dbus::Message& call)
    {
        const auto keep = [](sd_bus_message* reply, void* kept, sd_bus_error*) {
            static_cast<dbus::Message*>(kept)->reset(sd_bus_message_ref(reply));
            return 1;
        };
        dbus::Message reply;
        const auto asked = dbus::ask(bus, call, keep, &reply);
        EXPECT_TRUE(eventually([&] { return reply != nullptr; })) << sd_bus_message_get_member(call.get());
        return reply;
    }
};

} // namespace velmora
