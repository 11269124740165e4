// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "DaemonFixture.h"
#include "ThresholdsReturn.h"

#include <cmath>

namespace velmora {
namespace {

TEST_F(DaemonTest, ALimitThatWasThereBecomesTheLimitAtTheFirstStartOnly)
{
    const auto firstStart = [this](int startValue, int endValue) {
        daemon.reset();
        std::filesystem::remove(folder.path() / "settings.json");
        hold(startValue, endValue);
        boot();
        return daemon->batteryState().customChargeLimit;
    };
    EXPECT_EQ(firstStart(40, 65), 65);
    EXPECT_EQ(std::pair(start(), end()), std::pair(63, 65));
    hold(0, 90);
    boot();
    EXPECT_EQ(end(), 65) << "the second start knows better";
    EXPECT_EQ(firstStart(0, 0), 80) << "a controller after a reset";
    EXPECT_EQ(firstStart(0, 100), 80) << "no limit";
}

TEST_F(DaemonTest, WhatTheChargerHeldAtFirstIsGivenBack)
{
    const auto givenBack = [this] {
        daemon.reset();
        const auto result = giveThresholdsBack(Sysfs(folder.path()), settings->load().firstHeld, log);
        EXPECT_EQ(result.failed.size(), 0U);
        return std::pair(start(), end());
    };
    const auto firstStart = [this](const std::string& saved) {
        daemon.reset();
        std::filesystem::remove(folder.path() / "settings.json");
        if (!saved.empty()) folder.write("settings.json", saved);
        hold(40, 85);
        boot();
        change({.customChargeLimit = 60});
        boot(); // its own limit is no longer the charger's
    };
    firstStart("");
    EXPECT_EQ(end(), 60);
    EXPECT_EQ(givenBack(), std::pair(40, 85));
    files.inlineWork = false;
    firstStart("");
    EXPECT_EQ(end(), 85) << "a crash before the disk has it would make the daemon's own limit the first";
    change({.customChargeLimit = 70});
    files.run();
    settle();
    EXPECT_EQ(end(), 70);
    files.inlineWork = true;
    EXPECT_EQ(givenBack(), std::pair(40, 85));
    firstStart(R"({"version": 2, "hasAdoptedLimit": true})");
    EXPECT_EQ(givenBack(), std::pair(95, 100)) << "it was written to before anybody took notes";
    const auto types = std::filesystem::path(endFile).replace_filename("charge_types");
    folder.write(types, "[Standard] Custom\n");
    firstStart("");
    folder.write(types, "Standard [Custom]\n"); // as a driver shows what was chosen
    EXPECT_EQ(givenBack(), std::pair(95, 100)) << "40 to 85 was not in force";
    std::filesystem::remove(folder.path() / types);

    daemon.reset();
    std::filesystem::remove(folder.path() / "settings.json");
    hold(0, 0);
    log.clear();
    boot();
    boot();
    EXPECT_EQ(log.count("set aside"), 0U);
    EXPECT_EQ(givenBack(), std::pair(95, 100)) << "0 is how some controllers say that there is no limit";

    std::filesystem::remove(folder.path() / "settings.json");
    folder.write(endFile, "");
    boot();
    loop->advance(10s);
    ASSERT_EQ(end(), 80) << "nobody could wait any longer for it to tell";
    look();
    EXPECT_EQ(givenBack(), std::pair(95, 100));
    std::filesystem::remove(folder.path() / endFile);
    std::filesystem::create_directory(folder.path() / endFile);
    EXPECT_EQ(giveThresholdsBack(Sysfs(folder.path()), {}, log).done.size(), 0U);
}

// Rule one: without it the echo of one application takes back what another one set.
TEST_F(DaemonTest, TwoApplicationsDoNotFlipEachOthersSettings)
{
    ChargingSettings a; // each echoes all ten values, with its own idea of those that are never read back
    ChargingSettings b;
    send(":1.1", a);
    send(":1.2", b);
    b.isAppleRecommendedMode = false;
    send(":1.2", b);
    EXPECT_EQ(end(), 100);
    a.customChargeLimit = 70; // a slider in the first, where Auto-Protect still shows as on
    send(":1.1", a);
    EXPECT_EQ(end(), 100) << "which it did not change, only echo";
    b.customChargeLimit = 70; // the push, echoed
    send(":1.2", b);
    EXPECT_EQ(end(), 100) << "Auto-Protect stays off";
    EXPECT_EQ(daemon->batteryState().customChargeLimit, 70);

    daemon->save(); // as at SIGTERM
    boot();
    send(":1.1", a);
    EXPECT_EQ(end(), 100) << "nor does a restart of the daemon make an echo count";
    daemon->callerLeft(":1.1");
    send(":1.1", a);
    EXPECT_EQ(end(), 70) << "a newcomer's first message counts whole";
}

TEST_F(DaemonTest, AMessageThatChangesNothingEndsThere)
{
    send(":1.1", {});
    loop->advance(10s);
    log.clear();
    const auto pushed = pushes.size();
    const auto written = std::filesystem::last_write_time(folder.path() / "settings.json");
    const auto touched = std::filesystem::last_write_time(folder.path() / endFile);
    for (int i = 0; i < 100; ++i) send(":1.1", {});
    send(":1.2", {}, 1000); // not even who may not change anything is asked
    loop->advance(10s);
    EXPECT_EQ(log.count(), 0U);
    EXPECT_EQ(pushes.size(), pushed);
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(std::filesystem::last_write_time(folder.path() / "settings.json"), written);
    EXPECT_EQ(std::filesystem::last_write_time(folder.path() / endFile), touched);
}

// Notices are a matter between a user and the daemon.
TEST_F(DaemonTest, EachUserHasNoticesOfTheirOwnAndAsksNobodyForThem)
{
    const ChargingSettings quiet{.notifyOnHeat = false, .lowBatteryLimit = 300};
    daemon->settings({":1.1", 1000});
    daemon->settings({":1.2", 1000});
    loop->advance(10s);
    log.clear();
    pushes.clear();
    send(":1.1", quiet, 1000);
    EXPECT_EQ(corrected, (std::vector<std::string>{":1.2"})) << "the same user's other session";
    EXPECT_TRUE(announced.empty() && pushes.empty() && told.empty());
    EXPECT_EQ(log.count(), 0U);
    loop->advance(2s);
    boot();
    const ChargingSettings kept{.notifyOnHeat = false, .lowBatteryLimit = 100};
    EXPECT_EQ(daemon->settings({":1.3", 1000}), kept);
    EXPECT_EQ(daemon->settings({":1.4", 1001}), ChargingSettings{});
    send(":1.3", {.customChargeLimit = 60, .notifyOnCycle = true}, 1000);
    EXPECT_TRUE(daemon->settings({":1.5", 1000}).notifyOnCycle) << "needs no rights that the limit needs";
    EXPECT_EQ(daemon->settings({":1.5", 1000}).customChargeLimit, 80);
    send(":1.3", kept, 1000);
    EXPECT_FALSE(daemon->settings({":1.5", 1000}).notifyOnCycle) << "taken back after the refusal";
}

// A client that begins repeats what it was told. Somebody else may have changed that meanwhile.
TEST_F(DaemonTest, WhatAClientWasToldIsNotItsWish)
{
    change({.isAppleRecommendedMode = false, .isTemporaryOverride = true});
    auto held = daemon->settings({":1.1", 0});
    EXPECT_TRUE(held.isTemporaryOverride);
    EXPECT_FALSE(held.isAppleRecommendedMode);
    change({.customChargeLimit = 70});
    corrected.clear();
    send(":1.1", held);
    EXPECT_EQ(daemon->batteryState().customChargeLimit, 70);
    held.customHysteresis = 5;
    send(":1.1", held);
    EXPECT_EQ(daemon->batteryState().customChargeLimit, 70) << "its own change leaves that of the other";
    EXPECT_EQ(daemon->batteryState().customHysteresis, 5);
    EXPECT_EQ(corrected, std::vector<std::string>{":1.1"}) << "and it hears what it does not know";
}

TEST_F(DaemonTest, SingleSettingsAreChangedAllOrNoneAndAnnounced)
{
    announced.clear();
    EXPECT_EQ(change({.customChargeLimit = 70, .notifyOnHeat = false}), "");
    EXPECT_EQ(end(), 70);
    KeyedArchive news;
    news.encode("customChargeLimit", 70.0);
    EXPECT_EQ(announced, std::vector{news});
    EXPECT_EQ(change({.customChargeLimit = 19, .customHysteresis = 5}),
              "customChargeLimit 19 is not within 20 to 100");
    EXPECT_EQ(change({.customHysteresis = std::nan("")}), "customHysteresis nan is not within 0 to 20");
    EXPECT_EQ(change({.isStorageModeEnabled = true, .notifyOnCycle = true}, 1000),
              "not authorised to change isStorageModeEnabled true: polkit does not allow it");
    EXPECT_FALSE(daemon->settings({":1.8", 1000}).notifyOnCycle) << "none";
    EXPECT_EQ(daemon->settings({":1.8", 0}),
              (ChargingSettings{.customChargeLimit = 70, .notifyOnHeat = false}));

    change({.isTemporaryOverride = true});
    battery(100, "Full");
    EXPECT_EQ(end(), 70);
    EXPECT_EQ(announced.back().values().front().first, "isTemporaryOverride") << "its end is announced";
    EXPECT_FALSE(daemon->settings({":1.8", 0}).isTemporaryOverride);
    change({.isTemporaryOverride = true});
    EXPECT_EQ(end(), 100) << "who asks in so many words means a new one";
}

// Shown at once by who asked for it, a quick charge would flicker with what was so before the charger
// followed.
TEST_F(DaemonTest, WhoAsksForAQuickChargeHearsOfTheBatteryOnceTheChargerHasFollowed)
{
    send(":1.1", {.isTemporaryOverride = true});
    EXPECT_TRUE(told.empty());
    battery(60, "Not charging"); // which follows late, or never
    loop->advance(3s);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_FALSE(told.back().second.isCharging);
}

// Rule two: without it quick charge never ends, since a client says "true" with every message.
TEST_F(DaemonTest, QuickChargeEndsByItselfAndStaysEnded)
{
    ChargingSettings message{.isTemporaryOverride = true};
    send(":1.1", message);
    EXPECT_EQ(end(), 100);
    battery(100, "Full");
    EXPECT_EQ(end(), 80);
    message.notifyOnHeat = false; // still "true", with another change
    send(":1.1", message);
    EXPECT_EQ(end(), 80);
    boot();
    send(":1.1", message);
    send(":1.2", message); // another client that has never said false
    EXPECT_EQ(end(), 80) << "spent over a restart";
    message.isTemporaryOverride = false;
    send(":1.1", message);
    message.isTemporaryOverride = true;
    send(":1.1", message);
    EXPECT_EQ(end(), 100) << "asked for anew";
    battery(85, "Discharging", false);
    loop->advance(50s);
    EXPECT_EQ(end(), 100);
    loop->advance(20s);
    EXPECT_EQ(end(), 80) << "unplugged for over a minute";
}

TEST_F(DaemonTest, AChargeBeforeAJourneyIsAQuickChargeThatAPersonCanTakeOver)
{
    const auto cause = [this] {
        daemon->save();
        return rawValue(settings->load().quickChargeCause);
    };
    EXPECT_EQ(beginTravelCharge(1000), std::nullopt) << "not for everybody";
    announced.clear();
    EXPECT_EQ(beginTravelCharge(), true);
    EXPECT_EQ(end(), 100);
    EXPECT_EQ(announced.size(), 1U) << "every switch shows it";
    EXPECT_EQ(beginTravelCharge(1000), true) << "there is one already";
    boot();
    send(":1.1", {.isTemporaryOverride = true}); // which repeats what it was told
    EXPECT_EQ(cause(), "travel");
    change({.isTemporaryOverride = true}, 1000);
    EXPECT_EQ(cause(), "travel") << "without the right";
    change({.isTemporaryOverride = true});
    EXPECT_EQ(cause(), "person");
    battery(100, "Full");
    EXPECT_EQ(end(), 80);
    EXPECT_EQ(beginTravelCharge(), true) << "the next journey";
    EXPECT_EQ(cause(), "travel");
    send(":1.1", {}); // taken back
    EXPECT_EQ(end(), 80);
}

// Rule three: without it every reading wakes every client, and each of them answers.
TEST_F(DaemonTest, PushesWhatDiffersAtMostEveryTwoSecondsAndAlwaysTheLast)
{
    loop->advance(10s);
    pushes.clear();
    battery(61, "Charging");
    ASSERT_EQ(pushes.size(), 1U) << "the first at once";
    for (int level = 62; level <= 70; ++level) {
        loop->advance(100ms);
        battery(level, "Charging");
    }
    EXPECT_EQ(pushes.size(), 1U);
    loop->advance(2s);
    ASSERT_EQ(pushes.size(), 2U);
    EXPECT_EQ(pushes.back().percentage, 70);
    loop->advance(5s);
    battery(70, "Charging");
    EXPECT_EQ(pushes.size(), 2U) << "nothing differs";
}

// A push with the limit before may be on its way to the one who sets another, and would be echoed.
TEST_F(DaemonTest, WhoChangesASettingHearsOfItBeforeTheNextPushIsDue)
{
    loop->advance(10s);
    battery(61, "Charging"); // a push goes out, the next is two seconds off
    pushes.clear();
    send(":1.1", {.customChargeLimit = 90});
    EXPECT_TRUE(pushes.empty());
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told.back().first, ":1.1");
    EXPECT_EQ(told.back().second.customChargeLimit, 90);
    send(":1.1", {.customChargeLimit = 90});
    EXPECT_EQ(told.size(), 1U);
    hardware.inlineWork = false; // the firmware takes its time, and meanwhile the push is due
    send(":1.1", {.customChargeLimit = 70});
    loop->advance(2s);
    hardware.run();
    ASSERT_EQ(pushes.size(), 1U);
    EXPECT_EQ(pushes.back().customChargeLimit, 70);
}

// Rule four: without it a refused client shows what is not so, or its answer begins a quarrel without end.
TEST_F(DaemonTest, ARefusedMessageChangesNothingAndItsSenderAloneHearsTheTruth)
{
    loop->advance(10s);
    pushes.clear();
    const ChargingSettings bad[] = {{.customChargeLimit = 19},
                                    {.customChargeLimit = std::nan("")},
                                    {.customHysteresis = 21},
                                    {.lowBatteryLimit = INFINITY}};
    for (const auto& message : bad) send(":1.1", message);
    send(":1.3", {.customChargeLimit = 90}, 1000);
    EXPECT_EQ(end(), 80);
    EXPECT_TRUE(pushes.empty());
    ASSERT_EQ(told.size(), 5U);
    EXPECT_EQ(told.front().first, ":1.1");
    EXPECT_EQ(told.back().first, ":1.3");
    EXPECT_EQ(told.back().second.customChargeLimit, 80);
    EXPECT_EQ(log.count("(user 1000"), 1U);
    EXPECT_EQ(refused.back(), std::pair(std::string(":1.3"), Refused::denied));
    EXPECT_EQ(log.count("customChargeLimit 19 "), 1U);

    // The refused client takes the truth over and echoes it, with a switch of its own that differs.
    send(":1.3", {.isAppleRecommendedMode = false}, 1000);
    send(":1.3", {.isAppleRecommendedMode = false}, 1000);
    EXPECT_EQ(told.size(), 6U) << "said once";
    corrected.clear();
    send(":1.3", {.isAppleRecommendedMode = false}, 1000);
    EXPECT_EQ(corrected, std::vector<std::string>{":1.3"}) << "but its switches go back each time";
    for (int i = 0; i < 1000; ++i) send(":1.1", {.customChargeLimit = i / 100.0});
    EXPECT_LT(log.count(), 20U) << "a client cannot fill the log";
    send(":1.1", {.customChargeLimit = 70, .lowBatteryLimit = 400}, 500);
    EXPECT_EQ(end(), 70) << "the daemon's own user may, and a low-battery level is brought into range";
}

TEST_F(DaemonTest, NobodyIsAskedAboutRootNorForWhatNeedsNoRight)
{
    isThinking = true;
    send(":1.2", {.customChargeLimit = 70}, 500);
    send(":1.3", {.customChargeLimit = 90});
    const auto held = daemon->settings({":1.1", 1000, true});
    click(held);
    click({.customChargeLimit = 90, .notifyOnHeat = false});
    EXPECT_EQ(change({.customChargeLimit = 90, .notifyOnCycle = true}, 1000), "");
    EXPECT_EQ(toggle(1000, ChargingCommand::resume), true) << "there is no pause";
    EXPECT_EQ(asked, "");
    EXPECT_FALSE(daemon->settings({":1.1", 1000}).notifyOnHeat);
    click({.customChargeLimit = 80});
    daemon->controlCharging({":1.9", 1000}, ChargingCommand::toggle, [](const auto&) {});
    EXPECT_EQ(asked, ":1.1! :1.9 ");
    answer(":1.1");
    answer(":1.9");
    EXPECT_EQ(daemon->charger().mode, "paused");
    EXPECT_EQ(log.count("Changed by :1.1 (user 1000"), 1U);
    EXPECT_EQ(log.count("Changed by :1.9 (user 1000"), 1U);
}

// A password may take minutes, in which applications go on echoing and others go on changing.
TEST_F(DaemonTest, AfterAYesOnlyThatIsChangedWhichWasAskedForAndIsStillWanted)
{
    isThinking = true;
    daemon->settings({":1.1", 1000});
    click({.customChargeLimit = 90});
    change({.isStorageModeEnabled = true, .customHysteresis = 5});             // by root, meanwhile
    send(":1.1", {.isStorageModeEnabled = true, .notifyOnHeat = false}, 1000); // the echo of a push
    send(":1.1", {.isStorageModeEnabled = true, .customChargeLimit = 90}, 1000);
    click({.isStorageModeEnabled = true, .customChargeLimit = 90});
    EXPECT_EQ(asked, ":1.1! ") << "none of them begins the question anew, or ends it";
    EXPECT_EQ(daemon->batteryState().customChargeLimit, 80);
    answer(":1.1");
    EXPECT_EQ(daemon->batteryState().customChargeLimit, 90);
    EXPECT_EQ(daemon->batteryState().customHysteresis, 5);
    EXPECT_EQ(end(), 50) << "storage mode stays";

    const ChargingSettings storing{
        .isStorageModeEnabled = true, .customChargeLimit = 70, .customHysteresis = 5};
    daemon->settings({":1.1", 1000});
    click(storing);
    change({.customChargeLimit = 70});
    daemon->settings({":1.1", 1000}); // which learns it
    change({.customChargeLimit = 60});
    answer(":1.1");
    EXPECT_EQ(daemon->batteryState().customChargeLimit, 60)
        << "its wish came true, and was then another's to change";
    EXPECT_EQ(corrected.back(), ":1.1");
}

TEST_F(DaemonTest, OfASendersQuestionsTheNewestCounts)
{
    isThinking = true;
    daemon->settings({":1.1", 1000});
    click({.customChargeLimit = 90});
    click({.customChargeLimit = 85});
    EXPECT_EQ(asked, ":1.1! :1.1! ");
    EXPECT_TRUE(refused.empty()) << "the older message is past, not refused";
    answer(":1.1");
    EXPECT_EQ(end(), 85);
    send(":1.1", {.customChargeLimit = 88}, 1000);
    click({.customChargeLimit = 88}); // the same, and now a person may be asked
    EXPECT_TRUE(refused.empty());
    answer(":1.1");
    EXPECT_EQ(end(), 88);
    click({.customChargeLimit = 90});
    click({.customChargeLimit = 88}); // what is so
    EXPECT_EQ(withdrawn, 1U);
    click({.customChargeLimit = 90});
    daemon->callerLeft(":1.1");
    EXPECT_EQ(withdrawn, 2U);

    std::string reasons;
    const auto ask = [&](double limit) {
        const SettingsChange wish{{.customChargeLimit = limit}, differing({}, {.customChargeLimit = limit})};
        daemon->changeSettings({":1.8", 1000}, wish, [&](const auto& outcome) {
            const auto* refusal = std::get_if<Refusal>(&outcome);
            reasons += refusal ? refusal->reason + ". " : "done. ";
        });
    };
    ask(95);
    ask(96);
    EXPECT_EQ(reasons,
              "not authorised to change customChargeLimit 95: a newer request of the same program took "
              "its place. ");
    answer(":1.8");
    EXPECT_TRUE(reasons.ends_with("done. "));
    EXPECT_EQ(end(), 96);
}

TEST_F(DaemonTest, APersonWhoTriesAgainIsAskedAgainAndAnEchoIsNot)
{
    const std::pair<Refused, const char*> cases[] = {{Refused::denied, "does not allow"},
                                                     {Refused::needsPassword, "password is needed"},
                                                     {Refused::unavailable, "not there to decide"}};
    isThinking = true;
    daemon->settings({":1.1", 1000});
    for (const auto& [why, reason] : cases) {
        asked.clear();
        click({.customChargeLimit = 90});
        answer(":1.1", why);
        EXPECT_EQ(refused.back(), std::pair(std::string(":1.1"), why));
        EXPECT_EQ(told.back().second.customChargeLimit, 80);
        send(":1.1", {.customChargeLimit = 90}, 1000);
        EXPECT_EQ(asked, ":1.1! ");
        EXPECT_EQ(log.count(reason), 1U) << reason;
    }
    EXPECT_EQ(end(), 80);
}

TEST_F(DaemonTest, RepairsWhatWasResetAndLeavesAQuarrelAlone)
{
    log.clear();
    for (int i = 0; i < 10; ++i) {
        hold(0, 100);
        battery(60 + i, "Charging");
    }
    EXPECT_EQ(end(), 100);
    EXPECT_EQ(log.count("setting it again"), ChargerKeeper::maximumRepairs);
    EXPECT_EQ(log.count("keeps losing what is set"), 1U);
    loop->advance(1h + 1min);
    EXPECT_EQ(end(), 80) << "an hour later it is worth another try";
    hold(0, 100);
    daemon->resumed();
    settle();
    EXPECT_EQ(end(), 80) << "a reset by sleep is no quarrel";
    hold(0, 100);
    battery(70, "Discharging", false);
    hold(0, 100);
    battery(70, "Charging");
    EXPECT_EQ(end(), 80) << "nor is one by the plug";
}

TEST_F(DaemonTest, TheTogglePausesUntilTheNextPlugOrSetting)
{
    EXPECT_EQ(toggle(), false);
    EXPECT_EQ(std::pair(start(), end()), std::pair(0, 60));
    battery(59, "Not charging");
    EXPECT_EQ(end(), 60) << "the pause does not wander with the level";
    EXPECT_EQ(toggle(), true);
    EXPECT_EQ(end(), 80);
    toggle();
    battery(60, "Discharging", false);
    EXPECT_EQ(end(), 59) << "unplugging alone does not end it";
    battery(60, "Charging");
    EXPECT_EQ(end(), 80) << "the next plug does";
    toggle();
    send(":1.1", {.customChargeLimit = 85});
    EXPECT_EQ(end(), 85) << "and so does a setting";
    battery(85, "Not charging");
    EXPECT_EQ(toggle(), true) << "held at the limit it is resumed";
    EXPECT_EQ(end(), 100);
    EXPECT_EQ(toggle(1000), std::nullopt) << "not for everybody";

    toggle();
    for (int i = 0; i < 2; ++i) EXPECT_EQ(toggle(0, ChargingCommand::resume), false) << "no pause to end";
    battery(82, "Charging");
    hardware.inlineWork = false;
    std::vector<bool> answers;
    for (int i = 0; i < 2; ++i)
        daemon->controlCharging({":1.9", 0}, ChargingCommand::pause,
                                [&](const auto& outcome) { answers.push_back(std::get<bool>(outcome)); });
    EXPECT_TRUE(answers.empty()) << "the second too waits for the charger";
    hardware.inlineWork = true;
    while (hardware.run() || loop->runPosted()) {
    }
    EXPECT_EQ(answers, std::vector(2, false));
    EXPECT_EQ(toggle(0, ChargingCommand::pause), false);
    EXPECT_EQ(end(), 82);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(toggle(0, ChargingCommand::resume), true);
    EXPECT_EQ(end(), 85);

    send(":1.1", {.isTemporaryOverride = true, .customChargeLimit = 85});
    battery(88, "Charging");
    supply("BAT1", {{"type", "Battery"}, {"capacity", "90"}, {"energy_full", "45750000"}});
    battery(86, "Charging");
    EXPECT_EQ(toggle(), false);
    EXPECT_EQ(end(), 86) << "quick charge is paused too, and of several batteries the emptiest";
    boot();
    EXPECT_EQ(end(), 86) << "over a restart";
}

TEST_F(DaemonTest, AMomentInWhichNothingCanBeReadIsNoNewsAndIsWaitedOut)
{
    send(":1.1", {.isTemporaryOverride = true});
    loop->advance(10s);
    pushes.clear();
    battery(60, "Charging");
    supply("BAT0", {{"capacity", ""}}); // the supply is there all the same
    look();
    EXPECT_TRUE(pushes.empty());
    EXPECT_EQ(daemon->batteryState().percentage, 60);
    battery(100, "Full");
    supply("BAT0", {{"capacity", ""}, {"status", "Charging"}});
    look();
    supply("BAT0", {{"capacity", "100"}, {"status", "Full"}});
    loop->advance(2min);
    EXPECT_EQ(end(), 80) << "and quick charge ends without another event";

    battery(70, "Discharging", false);
    toggle();
    supply("BAT0", {{"capacity", ""}});
    look();
    EXPECT_EQ(end(), 70) << "nor is it a plug";

    change({.isTemporaryOverride = true});
    battery(70, "Discharging", false);
    supply("BAT0", {{"capacity", ""}});
    hardware.inlineWork = false;
    loop->advance(2min); // past the time at which quick charge ends
    for (int turn = 0; turn < 3; ++turn) {
        hardware.run();
        settle();
    }
    EXPECT_FALSE(hardware.run()) << "nor a reason for one look after another";
}

TEST_F(DaemonTest, ThresholdsThatComeLateAreFoundAndABatteryThatIsPutInIsNoRepair)
{
    const auto remove = [this] {
        std::filesystem::remove(folder.path() / startFile);
        std::filesystem::remove(folder.path() / endFile);
    };
    remove();
    boot();
    battery(80, "Full");
    for (int i = 0; i < 20; ++i) daemon->look(); // events, of which there may be many
    settle();
    hold(0, 100);
    loop->advance(2min);
    EXPECT_EQ(end(), 80) << "no event announces a driver";
    for (std::size_t swap = 0; swap < 2 * ChargerKeeper::maximumRepairs; ++swap) {
        remove();
        battery(70, "Charging");
        hold(0, 100);
        battery(70, "Charging");
        EXPECT_EQ(end(), 80);
    }
}

TEST_F(DaemonTest, ALimitOfTheFirmwaresOwnStandsInForEveryPercentage)
{
    const std::string mode = "bus/platform/drivers/ideapad_acpi/VPC2004:00/conservation_mode";
    const auto isOn = [&] { return folder.read(mode).front() == '1'; };
    daemon.reset();
    for (const auto* file : {startFile, endFile, "settings.json"})
        std::filesystem::remove(folder.path() / file);
    folder.write(mode, "1\n");
    boot();
    EXPECT_EQ(daemon->batteryState().customChargeLimit, 80) << "a switch is no number";
    EXPECT_EQ(daemon->charger().control, "fixed limit");
    EXPECT_EQ(daemon->charger().fixedLimit, "55-60 or 80");
    EXPECT_EQ(daemon->charger().endThreshold, -1) << "nobody knows yet";
    EXPECT_EQ(daemon->charger().wantedEndThreshold, 80);

    supply("BAT0", {{"power_now", "0"}});
    for (int i = 0; i < 2; ++i) {
        battery(58, "Not charging");
        loop->advance(2min);
    }
    for (int i = 0; i < 2; ++i, boot()) { // over a restart
        EXPECT_EQ(daemon->charger().fixedLimit, "55-60");
        EXPECT_EQ(daemon->charger().endThreshold, 60);
    }

    const std::tuple<const char*, ChargingSettings, bool> wishes[] = {
        {"a limit above it", {.customChargeLimit = 95}, true},
        {"no limit", {.customChargeLimit = 100}, false},
        {"storage", {.isStorageModeEnabled = true, .customChargeLimit = 100}, true},
        {"quick charge", {.isTemporaryOverride = true, .customChargeLimit = 70}, false},
        {"nothing", {.isAppleRecommendedMode = false, .customChargeLimit = 70}, false},
        {"a limit below it", {.customChargeLimit = 40}, true},
    };
    for (const auto& [what, wish, expected] : wishes) {
        send(":1.1", wish);
        EXPECT_EQ(isOn(), expected) << what;
    }
    EXPECT_EQ(daemon->charger().endThreshold, 60) << "what is held, whatever was asked for";
    folder.write(mode, "0\n");
    look();
    EXPECT_TRUE(isOn()) << "repaired";

    send(":1.1", {.isAppleRecommendedMode = false, .customChargeLimit = 40});
    battery(70, "Charging");
    EXPECT_EQ(toggle(), false) << "a pause above it";
    EXPECT_TRUE(isOn());
    toggle();
    battery(40, "Charging");
    EXPECT_EQ(toggle(), true) << "a pause below it cannot be";
    EXPECT_FALSE(isOn());
    const auto givenBack = giveThresholdsBack(Sysfs(folder.path()), settings->load().firstHeld, log).done;
    EXPECT_EQ(givenBack, std::vector<std::string>{"BAT0: the firmware's own limit is on again."});
    EXPECT_TRUE(isOn());

    daemon.reset();
    std::filesystem::remove(folder.path() / "settings.json");
    folder.write(mode, "0\n");
    boot();
    ASSERT_TRUE(isOn());
    supply("BAT1", {{"type", "Battery"}, {"present", "1"}, {"capacity", "40"}, {"status", "Charging"}});
    look();
    const auto firstHeld = settings->load().firstHeld;
    EXPECT_EQ(firstHeld.size(), 2U);
    giveThresholdsBack(Sysfs(folder.path()), firstHeld, log);
    EXPECT_FALSE(isOn()) << "the second battery saw what was written for the first";
}

TEST_F(DaemonTest, ALimitThatCannotBeReadAtOnceIsNotOverwrittenAtTheFirstStart)
{
    daemon.reset();
    std::filesystem::remove(folder.path() / "settings.json");
    folder.write(endFile, "");
    boot();
    EXPECT_EQ(folder.read(endFile), "");
    hold(0, 60);
    loop->advance(2s);
    EXPECT_EQ(daemon->batteryState().customChargeLimit, 60);
    EXPECT_EQ(end(), 60);
}

TEST_F(DaemonTest, AfterAResumeItLooksTwice)
{
    battery(80, "Not charging");
    loop->advance(3s);
    daemon->resumed();
    settle();
    hold(0, 100); // firmware that takes its time
    loop->advance(3s);
    EXPECT_EQ(end(), 80);
}

TEST_F(DaemonTest, WhatAFullDiskRefusedIsSavedOnceThereIsRoom)
{
    std::filesystem::create_directory(folder.path() / "settings.json.new"); // nothing can be written
    send(":1.1", {.customChargeLimit = 70});
    std::filesystem::remove(folder.path() / "settings.json.new");
    daemon->save();
    boot();
    EXPECT_EQ(daemon->batteryState().customChargeLimit, 70);
}

TEST_F(DaemonTest, LooksAsOftenAsThereIsSomethingToSee)
{
    const auto looksWithin = [this](std::chrono::milliseconds time) {
        loop->advance(5s);
        const int before = hardware.given;
        loop->advance(time);
        return hardware.given - before;
    };
    battery(80, "Not charging");
    EXPECT_NEAR(looksWithin(24h), 144, 30) << "the firmware holds";
    heat(91);
    EXPECT_LE(looksWithin(10min), 10);
    EXPECT_NEAR(looksWithin(1h), 50, 20) << "it holds, and is hot";
    EXPECT_EQ(daemon->analyticsHistory().back().thermalState, "Serious");
    heat(50);
    battery(79, "Discharging", false);
    EXPECT_NEAR(looksWithin(1h), 90, 30);
}

TEST_F(DaemonTest, WhoeverAsksIsToldWhatIsSoNow)
{
    battery(80, "Not charging");
    loop->advance(1min);
    pushes.clear();
    heat(96);
    std::string answered;
    const auto ask = [&] { daemon->ask([&] { answered += daemon->batteryState().thermalState + ' '; }); };
    ask();
    settle();
    EXPECT_EQ(answered, "Critical ");
    EXPECT_EQ(pushes.size(), 1U);
    const int before = hardware.given;
    for (int i = 0; i < 1000; ++i) ask();
    EXPECT_EQ(answered.size(), std::string("Critical ").size() * 1001);
    EXPECT_EQ(hardware.given, before) << "an answer this young is not read anew";

    loop->advance(50s);
    hardware.inlineWork = false; // firmware that takes its time
    heat(50);
    answered.clear();
    for (int i = 0; i < 100; ++i) ask();
    loop->advance(50ms);
    EXPECT_EQ(answered.size(), std::string("Critical ").size() * 100) << "from memory";
    hardware.run();
    settle();
    EXPECT_EQ(pushes.back().thermalState, "Nominal") << "and the truth follows";
}

TEST_F(DaemonTest, WithoutABatteryNothingIsClaimedWrittenOrRecorded)
{
    std::filesystem::remove_all(folder.path() / "class");
    std::filesystem::remove(folder.path() / "history.json");
    boot();
    EXPECT_EQ(daemon->batteryState().percentage, 0);
    EXPECT_EQ(daemon->batteryState().powerSource, "AC");
    EXPECT_FALSE(daemon->charger().hasBattery);
    EXPECT_EQ(daemon->charger().control, "none");
    EXPECT_TRUE(daemon->analyticsHistory().empty());
    EXPECT_EQ(toggle(), true);
    loop->advance(24h);
    EXPECT_EQ(loop->pendingTimers(), 0U);
}

} // namespace
} // namespace velmora
