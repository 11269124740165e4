// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SimulatedLaptop.h"
#include "LaptopKinds.h"

#include <gtest/gtest.h>

namespace velmora {

namespace {

constexpr double minute = 60;
const std::string battery = "class/power_supply/BAT0/";

struct Laptop : SimulatedLaptop {
    using SimulatedLaptop::SimulatedLaptop;
    explicit Laptop(const char* kind, double percent = 70) : SimulatedLaptop(*laptopOfKind(kind))
    {
        setLevel(percent);
    }

    std::string text(const std::string& path) const
    {
        const auto [bytes, error] = load(path);
        return error ? "errno " + std::to_string(error) : bytes.substr(0, bytes.size() - 1);
    }
    double number(const std::string& path) const { return std::stod(text(path)); }
    std::string status() const { return text(battery + "status"); }
};

TEST(SimulatedLaptop, ResumesOnlyBelowItsStartLevel)
{
    const struct {
        const char* what;
        const char* kind;
        double level;
        const char* status;
    } cases[] = {
        {"plugged in above the start", "thresholds", 76, "Not charging"},
        {"plugged in at the start", "thresholds", 75, "Not charging"},
        {"plugged in below the start", "thresholds", 74.9, "Charging"},
        {"plugged in above the limit", "thresholds", 90, "Not charging"},
        {"an end alone: within the firmware's gap", "end-only", 79, "Not charging"},
        {"an end alone: below that", "end-only", 77, "Charging"},
    };
    for (const auto& [what, kind, level, status] : cases) {
        SCOPED_TRACE(what);
        Laptop laptop(kind, 50);
        laptop.plug(false);
        laptop.store(battery + "charge_control_end_threshold", "80");
        laptop.store(battery + "charge_control_start_threshold", "75");
        laptop.setLevel(level);
        laptop.plug(true);
        EXPECT_EQ(laptop.status(), status);
        laptop.advance(minute);
        EXPECT_EQ(laptop.status(), status);
    }
}

TEST(SimulatedLaptop, GivesExactlyWhatTheMachineDraws)
{
    Laptop laptop("thresholds", 80);
    laptop.setLoad(12);
    laptop.plug(false);
    const double before = laptop.number(battery + "energy_now");
    laptop.advance(30 * minute);
    EXPECT_NEAR(laptop.number(battery + "energy_now"), before - 6e6, 10);
}

TEST(SimulatedLaptop, AnnouncesAsTheKernelDoes)
{
    using Names = std::vector<std::string>;
    Laptop laptop("thresholds", 74);
    laptop.takeAnnouncements();
    EXPECT_EQ(laptop.store(battery + "charge_control_end_threshold", "80"), 0);
    EXPECT_EQ(laptop.takeAnnouncements(), Names{}) << "a write is never announced";
    laptop.plug(false);
    EXPECT_EQ(laptop.takeAnnouncements(), (Names{"AC", "BAT0"}));
    laptop.advance(20 * minute);
    EXPECT_EQ(laptop.takeAnnouncements(), Names{"BAT0"}) << "a few percent less";
}

TEST(CapturedLaptop, StandsAsCapturedUntilItMoves)
{
    for (const auto& entry : std::filesystem::directory_iterator(VELMORA_MACHINES)) {
        if (entry.path().extension() != ".sysfs") continue;
        SCOPED_TRACE(entry.path().stem());
        const auto machine = CapturedMachine::load(entry.path());
        const Laptop laptop(LaptopMake{.machine = machine});
        for (const auto& [path, text] : machine.values) EXPECT_EQ(laptop.text(path), text) << path;
        for (const auto& [path, error] : machine.errors) EXPECT_EQ(laptop.load(path).error, error) << path;
    }
}

} // namespace

} // namespace velmora
