// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/BatteryModel.h"

#include "FakeDaemonClient.h"
#include "FakePlatform.h"
#include "history/AnalyticsStore.h"
#include "history/HistoryCodec.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace velmora {

struct BatteryModelIntake {
    static void take(BatteryModel& model, const SharedBatteryState& state)
    {
        model.updateFromSharedState(state);
    }
    static void check(BatteryModel& model, const std::optional<std::string>& oldPowerSource)
    {
        model.checkNotificationTriggers(0, model.chargingState.get(), oldPowerSource);
    }
};

namespace {

using namespace std::chrono_literals;
using ThermalState = ThermalMonitorService::ThermalState;
constexpr auto charging = ChargingState::charging;
constexpr auto idle = ChargingState::idle;

struct CountingSource final : BatteryDataSource {
    int updates = 0;
    bool isMonitored = false;
    void startMonitoring(Update) override { isMonitored = true; }
    void update() override { ++updates; }
};

HSBatteryState stateAt(double percentage, bool isCharging = false, double limit = 80)
{
    return {percentage, isCharging, "AC", "Nominal", limit, 2, -1, -1, false};
}

struct BatteryModelTest : testing::Test {
    FakePlatform platform;
    ManualLoop& loop = *platform.loop;
    std::shared_ptr<FakeDaemonClient> daemon = std::make_shared<FakeDaemonClient>();
    std::shared_ptr<CountingSource> source = std::make_shared<CountingSource>();
    std::unique_ptr<BatteryModel> owned = std::make_unique<BatteryModel>(daemon, source);
    BatteryModel& model = *owned;
};

TEST_F(BatteryModelTest, TakesADaemonRecordAsItIsOnTheMainThread)
{
    daemon->answer(HSBatteryState(104.2, true, "  AC\n", "Serious", 85, 3, 40, -7, true));
    EXPECT_EQ(model.percentage.get(), 50) << "nothing changes on the thread of the connection";
    EXPECT_FALSE(source->isMonitored) << "live readings are the daemon's";
    loop.runPosted();
    EXPECT_EQ(model.percentage.get(), 104.2);
    EXPECT_EQ(model.chargingState.get(), charging);
    EXPECT_EQ(model.powerSource.get(), "  AC\n");
    EXPECT_EQ(model.thermalState.get(), ThermalState::serious);
    EXPECT_EQ(model.customChargeLimit.get(), 85);
    EXPECT_EQ(model.customHysteresis.get(), 3);
    EXPECT_EQ(model.timeToFull.get(), 40);
    EXPECT_EQ(model.timeToEmpty.get(), -7);
    EXPECT_TRUE(model.isStorageModeEnabled.get());
    EXPECT_TRUE(AnalyticsStore::shared().getHistory().empty());

    daemon->push(HSBatteryState(60, false, "AC", "serious", 85, 3, 40, -7, false));
    loop.runPosted();
    EXPECT_EQ(model.percentage.get(), 60);
    EXPECT_EQ(model.thermalState.get(), ThermalState::nominal) << "an unknown text";
    EXPECT_EQ(model.timeToLimit.get(), -1);
}

TEST_F(BatteryModelTest, HistoryIsReplacedByWhatTheDaemonAnswers)
{
    for (const std::vector<HSHistorySnapshot>& samples :
         {std::vector(2, HSHistorySnapshot(Date{9}, 1, 1, "Fair", true)), {{Date{3}, 2, 1, "Fair", true}}}) {
        daemon->answer(samples);
        loop.runPosted();
        EXPECT_EQ(model.history.get(), samples);
        model.fetchHistory();
    }
}

TEST_F(BatteryModelTest, NothingReachesAModelThatIsGone)
{
    model.isSimulationModeEnabled.set(true);
    model.customChargeLimit.set(90);
    daemon->answer(stateAt(10)); // still on its way when the model goes
    owned = nullptr;
    daemon->answer(std::vector{HSHistorySnapshot(Date{}, 1, 1, "Fair", true)});
    daemon->push(stateAt(20));
    EXPECT_EQ(loop.pendingTimers(), 0U);
    loop.advance(5min);
    EXPECT_TRUE(daemon->sent.empty());
}

TEST_F(BatteryModelTest, TakesACloudStateWithinBoundsAndRecordsIt)
{
    platform.settle();
    model.thermalState.set(ThermalState::fair);
    const std::pair<double, double> cases[] = {{104.2, 100}, {-3, 0}, {42.5, 42.5}, {std::nan(""), 0}};
    for (const auto& [sent, taken] : cases) {
        loop.advance(1h);
        BatteryModelIntake::take(model, {.percentage = sent,
                                         .isCharging = true,
                                         .powerSource = "  Battery \r\n",
                                         .timeToFull = 40,
                                         .timeToEmpty = 90,
                                         .remoteChargeLimit = 60,
                                         .thermalState = "Critical"});
        EXPECT_EQ(model.percentage.get(), taken);
        platform.settle();
    }
    EXPECT_EQ(model.powerSource.get(), "Battery");
    EXPECT_EQ(model.lastCloudSyncDate.get(), platform.clock->now());
    EXPECT_EQ(model.customChargeLimit.get(), 80);
    EXPECT_EQ(model.thermalState.get(), ThermalState::fair);
    EXPECT_FALSE(model.isStorageModeEnabled.get());
    EXPECT_EQ(model.timeToEmpty.get(), 90);
    EXPECT_EQ(model.timeToLimit.get(), 32);
    ASSERT_EQ(AnalyticsStore::shared().history.get().size(), std::size(cases));
    EXPECT_EQ(AnalyticsStore::shared().history.get()[2],
              HSHistorySnapshot(platform.clock->now() + -3600, 42.5, 94, "Fair", true));
    BatteryModelIntake::take(model, {.isStorageModeEnabled = true});
    EXPECT_TRUE(model.isStorageModeEnabled.get());
}

TEST(BatteryModelStore, TheFirstRecordOfARunMeetsTheSavedHistory)
{
    for (const bool isLoaded : {true, false}) { // when the record comes
        FakePlatform platform;
        const std::vector saved{HSHistorySnapshot(ManualClock::start, 50, 94, "Nominal", false)};
        platform.folder.write("support/Velmora/history.json", encodeHistory(saved));
        BatteryModel model(nullptr, nullptr);
        model.isSimulationModeEnabled.set(false); // without a client there is nobody to ask
        model.toggleTemporaryOverride();
        if (isLoaded) platform.settle();
        BatteryModelIntake::take(model, {.percentage = 52}); // tells nothing new
        platform.queue("app.velmora.analytics")->run();
        EXPECT_EQ(decodeHistory(platform.folder.read("support/Velmora/history.json")), saved);
        platform.settle();
        EXPECT_EQ(AnalyticsStore::shared().getHistory().size(), isLoaded ? 1U : 2U);
    }
}

TEST_F(BatteryModelTest, DerivesTheMinutesToTheLimit)
{
    constexpr auto huge = std::numeric_limits<std::int64_t>::max();
    const double infinite = std::numeric_limits<double>::infinity();
    const std::tuple<const char*, bool, double, double, std::int64_t, std::int64_t> cases[] = {
        {"a fraction is cut", true, 61, 80, 40, 19},
        {"at the limit", true, 80, 80, 30, 0},
        {"full under a limit past full", true, 100, 120, 30, 0},
        {"a single minute to full", true, 60, 80, 1, 0},
        {"time to full unknown", true, 60, 80, 0, -1},
        {"not charging", false, 60, 80, 40, -1},
        {"time to full absurd", true, 0, 100, huge, huge},
        {"limit absurd", true, 60, infinite, 40, huge},
        {"level absurd", true, -infinite, 80, 40, 0},
    };
    for (const auto& [what, isCharging, level, limit, toFull, toLimit] : cases) {
        daemon->push({level, isCharging, "AC", "Nominal", limit, 2, toFull, -1, false});
        loop.runPosted();
        EXPECT_EQ(model.timeToLimit.get(), toLimit) << what;
        EXPECT_EQ(model.isLimitReached(), level >= limit) << what;
    }
}

TEST_F(BatteryModelTest, EachSettingIsSentHalfASecondAfterItsLastChange)
{
    for (const double limit : {70.0, 75.0, 90.0}) { // a finger on the slider
        model.customChargeLimit.set(limit);
        loop.advance(100ms);
    }
    loop.advance(399ms);
    EXPECT_TRUE(daemon->sent.empty());
    loop.advance(1ms);
    ChargingSettings expected{.customChargeLimit = 90};
    EXPECT_EQ(daemon->sent, std::vector{expected});
    EXPECT_EQ(loop.pendingTimers(), 0U);

    const std::function<void(ChargingSettings&)> changes[] = {
        [&](auto& sent) { model.customHysteresis.set(sent.customHysteresis = 5); },
        [&](auto& sent) { model.isStorageModeEnabled.set(sent.isStorageModeEnabled = true); },
        [&](auto& sent) { model.notifyOnLimit.set(sent.notifyOnLimit = false); },
        [&](auto& sent) { model.notifyOnHeat.set(sent.notifyOnHeat = false); },
        [&](auto& sent) { model.notifyOnCycle.set(sent.notifyOnCycle = true); },
        [&](auto&) { model.notifyOnLowBattery.set(false); }, // sends all the same
        [&](auto& sent) { model.lowBatteryLimit.set(sent.lowBatteryLimit = 10); },
        [&](auto& sent) { model.notifyOnPowerChange.set(sent.notifyOnPowerChange = false); },
    };
    for (std::size_t i = 0; i < std::size(changes); ++i) {
        changes[i](expected);
        loop.advance(500ms);
        ASSERT_EQ(daemon->sent.size(), i + 2);
        EXPECT_EQ(daemon->sent.back(), expected) << i;
    }
}

TEST_F(BatteryModelTest, FollowsWhatIsHeldAndRepeatsItOnceItIsQuiet)
{
    ChargingSettings held{.isAppleRecommendedMode = false,
                          .isTemporaryOverride = true,
                          .isStorageModeEnabled = true,
                          .customChargeLimit = 70,
                          .customHysteresis = 5,
                          .notifyOnLimit = false,
                          .notifyOnHeat = false,
                          .notifyOnCycle = true,
                          .notifyOnPowerChange = false,
                          .lowBatteryLimit = 10};
    model.followSettings(held);
    EXPECT_FALSE(model.isAppleRecommendedModeEnabled.get() || model.notifyOnPowerChange.get());
    EXPECT_EQ(model.lowBatteryLimit.get(), 10);
    EXPECT_TRUE(daemon->sent.empty());
    loop.advance(500ms);
    EXPECT_EQ(daemon->sent, std::vector{held});
    model.followSettings(held); // its own change, announced
    EXPECT_EQ(loop.pendingTimers(), 0U);
    held.isTemporaryOverride = false; // it can be asked for anew at once
    model.followSettings(held);
    EXPECT_EQ(daemon->sent.size(), 2U);
    EXPECT_EQ(daemon->sent.back(), held);
}

TEST_F(BatteryModelTest, ModesAreSentAtOnce)
{
    model.percentage.set(40);
    model.toggleTemporaryOverride();
    EXPECT_EQ(model.chargingState.get(), charging);
    model.toggleAppleRecommendedMode();
    EXPECT_EQ(daemon->sent,
              (std::vector{ChargingSettings{.isTemporaryOverride = true},
                           ChargingSettings{.isAppleRecommendedMode = false, .isTemporaryOverride = true}}));
    model.toggleCharging();
    EXPECT_EQ(model.chargingState.get(), idle);
    model.toggleCharging();
    EXPECT_EQ(model.chargingState.get(), charging);
    model.toggleTemporaryOverride();
    model.percentage.set(90);
    EXPECT_FALSE(model.isLimitReached()) << "the mode is off";
    model.toggleAppleRecommendedMode();
    EXPECT_EQ(model.chargingState.get(), idle) << "shown before the daemon says so";
    loop.advance(1min);
    EXPECT_EQ(daemon->sent.size(), 4U);
}

TEST_F(BatteryModelTest, ASimulatedBatteryClimbsToEightyAndHoversThere)
{
    model.percentage.set(77);
    model.chargingState.set(charging);
    model.isSimulationModeEnabled.set(true);
    loop.advance(59s);
    EXPECT_EQ(model.percentage.get(), 77) << "the first step comes after an interval";
    std::vector<double> levels;
    for (int minute = 0; minute < 8; ++minute) {
        loop.advance(1min);
        levels.push_back(model.percentage.get());
    }
    EXPECT_EQ(levels, (std::vector<double>{78, 79, 80, 79, 78, 77, 78, 79}));
}

TEST_F(BatteryModelTest, ASimulatedBatteryStaysWithinItsEnds)
{
    const struct {
        const char* what;
        bool isOverride, isRecommended;
        ChargingState state;
        double from, to;
        ChargingState after; ///< after the first step to `to`, and of it
    } cases[] = {
        {"the override ends at full and the mode takes over", true, true, charging, 99, 100, idle},
        {"full stays full", false, false, charging, 100, 100, charging},
        {"without the mode it drains", false, false, idle, 1, 0, idle},
        {"empty stays empty", false, false, idle, 0, 0, idle},
        {"with the mode it charges below the band", false, true, idle, 40, 39, charging},
        {"inside the band nothing flips", false, true, idle, 80, 79, idle},
    };
    for (const auto& [what, isOverride, isRecommended, state, from, to, after] : cases) {
        SCOPED_TRACE(what);
        model.isTemporaryOverrideEnabled.set(isOverride);
        model.isAppleRecommendedModeEnabled.set(isRecommended);
        model.chargingState.set(state);
        model.percentage.set(from);
        model.isSimulationModeEnabled.set(true); // anew: one step a minute, not two
        loop.advance(1min);
        EXPECT_EQ(model.percentage.get(), to);
        EXPECT_EQ(model.chargingState.get(), after);
        EXPECT_FALSE(model.isTemporaryOverrideEnabled.get());
    }
}

TEST_F(BatteryModelTest, LeavingTheSimulationAsksForTheTruth)
{
    for (const bool wasOn : {true, false}) { // every assignment counts
        model.isSimulationModeEnabled.set(wasOn);
        source->updates = 0;
        daemon->stateRequests.clear();
        model.isSimulationModeEnabled.set(false);
        EXPECT_EQ(source->updates, 1);
        EXPECT_EQ(daemon->stateRequests.size(), 1U);
        EXPECT_EQ(loop.pendingTimers(), 0U);
    }
}

struct NotificationTriggersTest : testing::Test {
    /// The identifiers of the notices that the step posts.
    std::vector<std::string> take(const SharedBatteryState& state)
    {
        machine.notificationCenter->removeDelivered(standing());
        BatteryModelIntake::take(model, state);
        return standing();
    }
    std::vector<std::string> standing() const
    {
        std::vector<std::string> identifiers;
        for (const auto& one : machine.notificationCenter->standing()) identifiers.push_back(one.identifier);
        return identifiers;
    }

    FakePlatform machine;
    BatteryModel model{nullptr, nullptr};
};

TEST_F(NotificationTriggersTest, ADeviceInTheFleetIsReportedOnceForWhatItDoes)
{
    const std::tuple<double, bool, std::vector<std::string>> steps[] = {
        {79.2, true, {}},
        {79.2, false, {"limit_reached"}},
        {79.2, true, {}},
        {79.2, false, {}}, // once
        {78.5, true, {"charging_resumed"}},
        {80, false, {"limit_reached"}},
        {70, false, {}}, // not yet well below
        {80, true, {}},
        {80, false, {}},
        {69.9, false, {}}, // now it is
        {80, true, {}},
        {80, false, {"limit_reached"}},
        {20, false, {"low_battery"}},
        {19, false, {}},
        {25, false, {}},
        {20, false, {}},
        {25.1, false, {}},
        {std::nan(""), false, {"low_battery"}},
    };
    model.customHysteresis.set(5);
    for (const auto& [level, isCharging, posted] : steps)
        EXPECT_TRUE(take({.percentage = level, .isCharging = isCharging}).empty()) << "none is selected";
    model.selectedDeviceID.set("other");
    for (const auto& [level, isCharging, posted] : steps)
        EXPECT_EQ(take({.percentage = level, .isCharging = isCharging}), posted) << level;
}

TEST_F(NotificationTriggersTest, SwitchesAndWordsAreTheUsers)
{
    model.selectedDeviceID.set("other");
    const auto pass = [this](bool isWanted) {
        for (auto* one : {&model.notifyOnLimit, &model.notifyOnLowBattery, &model.notifyOnPowerChange})
            one->set(isWanted);
        BatteryModelIntake::take(model, {.percentage = 80, .isCharging = true, .powerSource = "AC Power"});
        BatteryModelIntake::take(model, {.percentage = 80, .powerSource = "Battery"});
        for (const auto& old : {std::optional<std::string>(), {"Battery"}, {"AC Power"}})
            BatteryModelIntake::check(model, old);
        BatteryModelIntake::take(model, {.percentage = 17.9, .powerSource = "Battery"});
    };
    pass(false);
    EXPECT_EQ(machine.notificationCenter->delivered(), 0);
    pass(true);
    EXPECT_EQ(machine.notificationCenter->delivered(), 3);
    EXPECT_EQ(
        machine.notificationCenter->standing(),
        (std::vector<NotificationRequest>{
            {"limit_reached", "Charge Limit Reached",
             "Battery protected at target. Your remote Mac is now running on AC."},
            {"power_change", "Power Source Changed", "Your remote Mac is now on Battery."},
            {"low_battery", "Remote Mac Battery Low", "Your MacBook is at 17%. Consider plugging it in."}}));
}

} // namespace

} // namespace velmora
