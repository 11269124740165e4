// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/FleetTexts.h"

#include "ManualLoop.h"

#include <gtest/gtest.h>
#include <set>

namespace velmora {
namespace {

constexpr Date now = ManualClock::start;

/// It was sent a command to 60 % so many seconds ago, and holds 80 %.
DeviceReport commanded(double secondsAgo)
{
    DeviceReport device;
    device.state = {.remoteChargeLimit = 60,
                    .remoteAppleMode = true,
                    .isStorageModeEnabled = false,
                    .commandTimestamp = now + -secondsAgo,
                    .deviceID = "B",
                    .deviceName = "Desk"};
    device.inForce = SettingsInForce{
        .limit = 80, .isAutoProtectOn = true, .acceptsCommands = true, .commandTaken = now + -4'000.0};
    device.commandOrigin = "Attic (A)";
    return device;
}

TEST(FleetTexts, TellWhatBecameOfACommandAndWhatTheNextBeginsWith)
{
    auto taken = commanded(400), overruled = commanded(400), own = commanded(30), silent = commanded(0);
    taken.inForce->commandTaken = overruled.inForce->commandTaken = now + -400.0;
    taken.inForce->limit = 60;
    own.commandOrigin = "Desk (B)";
    silent.state.commandTimestamp.reset();
    const struct {
        DeviceReport device;
        const char* says;
        double next; ///< limit
    } cases[] = {
        {silent, "", 80},
        {commanded(30), "sent just now. That machine looks once a minute.", 60},
        {commanded(299), "sent 4 minutes ago. That machine looks", 60},
        {commanded(300), "not picked up within five minutes", 80},
        {taken, "sent 6 minutes ago, and taken over there.", 60},
        {overruled, "changed at that machine since.", 80},
        {own, "Set at that machine itself just now.", 80},
    };
    for (const auto& [device, says, next] : cases) {
        const auto text = fleet::commandText(device, now);
        EXPECT_NE(text.find(says), text.npos) << text;
        EXPECT_EQ(text.empty(), std::string_view(says).empty());
        EXPECT_EQ(fleet::suggested(device, now).limit, next) << says;
    }
    for (const auto& [inForce, next] : {std::pair{30., 30.}, {-5., 50.}, {1e300, 100.}}) {
        taken.inForce->limit = inForce; // by a script there, or nonsense
        EXPECT_EQ(fleet::suggested(taken, now).limit, next);
        EXPECT_EQ(fleet::lowLimitText(taken).empty(), next != 30);
    }
    taken.inForce->limit = 30;
    taken.state.remoteChargeLimit = 40; // passed over there, the modes are as they were wanted
    EXPECT_NE(fleet::commandText(taken, now).find("taken over"), std::string::npos);
    EXPECT_EQ(fleet::obstacleText(taken), "");
    taken.inForce->acceptsCommands = false;
    EXPECT_NE(fleet::obstacleText(taken), "");
    EXPECT_NE(fleet::obstacleText(DeviceReport{}), fleet::obstacleText(taken));
}

TEST(FleetTexts, TellHowOldIsWhatAMachineSaid)
{
    const std::pair<double, const char*> cases[] = {
        {-50, "Charging, heat: Fair, just now"},
        {-600, "Charging, heat: Fair, heard of at an unknown time, as its clock is ahead"},
        {119, "Charging, heat: Fair, just now"},
        {180, "Charging, heat: Fair, 3 minutes ago"},
        {600, "Charging, heat: Fair, not heard of for 10 minutes"},
        {3'600, "Charging, heat: Fair, not heard of for 1 hour"},
        {2 * 86'400, "Charging, heat: Fair, not heard of for 2 days"},
    };
    DeviceReport device;
    EXPECT_EQ(fleet::statusText(device, now), "Not charging, not heard of yet");
    device.state.isCharging = true;
    device.state.thermalState = "Fair";
    for (const auto& [seconds, text] : cases) {
        device.lastUpdate = now + -seconds;
        EXPECT_EQ(fleet::statusText(device, now), text);
        EXPECT_EQ(device.isSilent(now), seconds >= 600 || seconds <= -600);
    }
    device.state.deviceName = "\x1b[2J \n";
    EXPECT_EQ(fleet::nameOf(device).find('\x1b'), std::string::npos)
        << "what a machine calls itself is anybody's text";
}

TEST(FleetTexts, SayOfEachFaultSomethingOfItsOwn)
{
    std::set<std::string> texts;
    const RecordPlace thisComputer;
    RecordPlace place{.kind = RecordPlace::Kind::server, .host = "h", .user = "ada"};
    for (std::size_t fault = 0; fault < recordFaultTexts.size(); ++fault)
        texts.insert(fleet::problemText(RecordFault(fault), place));
    EXPECT_EQ(texts.size(), recordFaultTexts.size());
    EXPECT_NE(fleet::problemText(RecordFault::noModule, thisComputer),
              fleet::problemText(RecordFault::noModule, place));
    EXPECT_NE(fleet::testText(RecordFault::none, place), "");
    EXPECT_EQ(fleet::missingText(place), "");
    for (auto* text : {&place.host, &place.user, &place.database}) {
        const auto kept = std::exchange(*text, "");
        EXPECT_TRUE(texts.insert(fleet::missingText(place)).second);
        *text = "a b";
        EXPECT_NE(fleet::missingText(place), "");
        *text = kept;
    }
    place.passwordFile = "/nonexistent";
    EXPECT_NE(fleet::testText(RecordFault::noPassword, place).find(place.passwordFile), std::string::npos);
    place.port = 0;
    EXPECT_NE(fleet::missingText(place).find("65535"), std::string::npos);
}

} // namespace
} // namespace velmora
