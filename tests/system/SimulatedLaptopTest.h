// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "FuseTree.h"
#include "LaptopKinds.h"
#include "SystemTest.h"

#include <memory>

namespace velmora {

/// velmorad over a laptop whose time the test moves, and whose files answer as a kernel's would.
struct SimulatedLaptopTest : SystemTest {
    void SetUp() override
    {
        mount({});
        if (!mounted) GTEST_SKIP() << whyNot;
    }
    void TearDown() override
    {
        SystemTest::TearDown();
        mounted.reset();
    }

    void mount(std::chrono::milliseconds heldWrite)
    {
        mounted.reset();
        std::filesystem::create_directories(tree());
        mounted = FuseTree::mount(laptop, {.folder = tree(), .heldWrite = heldWrite}, whyNot);
    }

    /// Does something to the laptop, which announces what changed by it.
    template <typename Deed>
    void with(Deed deed)
    {
        const auto changed = laptop.with([&](SimulatedLaptop& one) {
            deed(one);
            return one.takeAnnouncements();
        });
        for (const auto& supply : changed) mounted->announce(supply);
    }
    void plug(bool isPlugged)
    {
        with([&](auto& one) { one.plug(isPlugged); });
    }

    /// Lets time pass for the laptop, at most two days, until one of its batteries is in this state.
    bool passUntil(int percent, const std::string& status)
    {
        for (int minute = 0; minute < 2 * 24 * 60; ++minute) {
            with([](auto& one) { one.advance(60); });
            const auto battery = look().batteries.front();
            if (battery.percent == percent && battery.status == status) return true;
        }
        return false;
    }
    void passHours(int hours)
    {
        for (int minute = 0; minute < hours * 60; ++minute) with([](auto& one) { one.advance(60); });
    }

    LaptopLook look()
    {
        return laptop.with([](const SimulatedLaptop& one) { return one.look(); });
    }

    /// The daemon has come to see it so.
    bool shows(double percentage, bool isCharging)
    {
        return eventually([&] {
            const auto now = peer.state();
            return now && std::abs(now->percentage - percentage) < 1 && now->isCharging == isCharging;
        });
    }

    std::string whyNot; ///< mounted
    SharedLaptop laptop{laptopOfKind("thresholds").value()};
    std::unique_ptr<FuseTree> mounted;
};

} // namespace velmora
