// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SimulatedLaptopTest.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;

TEST_F(SimulatedLaptopTest, ChargesToTheLimitStaysAndResumesBelowTheStart)
{
    begin("thresholds");
    ASSERT_TRUE(becomes(78, 80));
    ASSERT_TRUE(passUntil(80, "Not charging"));
    passHours(24);
    EXPECT_EQ(look().batteries.front().percent, 80);
    EXPECT_TRUE(shows(80, false));

    plug(false);
    ASSERT_TRUE(passUntil(79, "Discharging"));
    EXPECT_TRUE(shows(79, false));
    EXPECT_EQ(peer.state()->powerSource, "Battery");
    plug(true);
    passHours(1);
    EXPECT_EQ(look().batteries.front().percent, 79) << "not worth charging yet";
    plug(false);
    ASSERT_TRUE(passUntil(76, "Discharging"));
    plug(true);
    EXPECT_TRUE(shows(76, true));
    EXPECT_TRUE(passUntil(80, "Not charging"));
    EXPECT_TRUE(shows(80, false));
}

TEST_F(SimulatedLaptopTest, FirmwareThatDoesNotAnswerKeepsNobodyWaitingAndLosesNothing)
{
    begin("thresholds", 3s);
    ASSERT_TRUE(peer.set({.customChargeLimit = 70}));
    EXPECT_EQ(peer.state()->customChargeLimit, 70);
    EXPECT_EQ(end(), 100) << "the first write is still under way";
    stopDaemon();
    EXPECT_NE(folder.read(state() / "settings.json").find("\"customChargeLimit\": 70"), std::string::npos);
}

} // namespace
} // namespace velmora
