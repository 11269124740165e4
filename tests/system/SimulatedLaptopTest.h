// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "SystemTest.h"

#include "FuseTree.h"
#include "LaptopKinds.h"

namespace velmora {

/// velmorad over a laptop whose time the test moves, and whose files answer as a kernel's would.
class SimulatedLaptopTest : public SystemTest {
protected:
    void TearDown() override
    {
        SystemTest::TearDown();
        mounted.reset();
    }

    void begin(const char* kind, std::chrono::milliseconds heldWrite = {})
    {
        laptop.emplace(laptopOfKind(kind).value());
        std::filesystem::create_directories(tree());
        std::string whyNot;
        mounted = FuseTree::mount(*laptop, {.folder = tree(), .heldWrite = heldWrite}, whyNot);
        if (!mounted) GTEST_SKIP() << whyNot;
        startDaemon();
    }

    /// Does something to the laptop, which announces what changed by it.
    template <typename Deed>
    void with(Deed deed)
    {
        const auto changed = laptop->with([&](SimulatedLaptop& one) {
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
        return laptop->with([](const SimulatedLaptop& one) { return one.look(); });
    }

    /// The daemon has come to see it so.
    bool shows(double percentage, bool isCharging)
    {
        return eventually([&] {
            const auto now = peer.state();
            return now && std::abs(now->percentage - percentage) < 1 && now->isCharging == isCharging;
        });
    }

    std::optional<SharedLaptop> laptop;
    std::unique_ptr<FuseTree> mounted;
};

} // namespace velmora
