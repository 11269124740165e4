// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopShow.h"
#include "LaptopKinds.h"

#include <gtest/gtest.h>

namespace velmora {

namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

struct FakeTree : LaptopTree {
    void refresh() override {}
    void announce(const std::string& supply) override { announced.push_back(supply); }
    std::string_view description() const override { return "none"; }
    std::vector<std::string> announced;
};

struct Show : testing::Test {
    Lines told() { return std::exchange(lines, {}); }
    void store(const char* name, const char* text)
    {
        laptop.with([&](SimulatedLaptop& made) { made.store(supplyPath("BAT0") + "/" + name, text); });
    }

    Lines lines;
    FakeTree tree;
    SharedLaptop laptop{*laptopOfKind("thresholds")};
    LaptopShow show{laptop, tree, 160, [this](const std::string& line) { lines.push_back(line); }};
};

TEST_F(Show, TellsAnOwnersStory)
{
    EXPECT_EQ(told(), (Lines{"plugged in", "charging at 70 %, 38 W"}));
    store("charge_control_end_threshold", "80\n");
    store("charge_control_start_threshold", "81\n");
    store("charge_control_start_threshold", "75\n");
    laptop.with([](SimulatedLaptop& made) { made.setLevel(77); });
    show.pass(10ms);
    EXPECT_EQ(told(), (Lines{"the system set the limit to 80 %",
                             "refused: the start level cannot be \"81\" (Invalid argument)",
                             "the system set the start level to 75 %", "charging at 77 %, 38 W"}));
    for (int tick = 0; tick < 60; ++tick) show.pass(200ms);
    EXPECT_EQ(told(), Lines{"stopped at the limit: 80 %"});
    show.command("unplug");
    EXPECT_EQ(told(), (Lines{"the charger was unplugged", "on battery at 80 %, 9 W"}));
    show.pass(2s);
    show.command("plug");
    EXPECT_EQ(told(), (Lines{"the charger was plugged in", "not charging at 78 %: it begins below 75 %"}));
}

TEST_F(Show, AnnouncesTheFirstChangeAtOnceAndThenOneInTwoSeconds)
{
    show.command("unplug");
    EXPECT_EQ(tree.announced, (Lines{"AC", "BAT0"}));
    show.command("plug");
    show.command("unplug");
    show.pass(1900ms);
    EXPECT_EQ(tree.announced.size(), 2U);
    show.pass(100ms);
    EXPECT_EQ(tree.announced, (Lines{"AC", "BAT0", "AC", "BAT0"}));
}

} // namespace

} // namespace velmora
