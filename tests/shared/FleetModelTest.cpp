// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakeDaemonClient.h"
#include "FakePlatform.h"
#include "fleet/CloudBatteryService.h"
#include "model/BatteryModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
namespace field = device_record;

HSBatteryState ownState(double limit = 80, bool isStorageModeOn = false)
{
    return {71, false, "AC", "Fair", limit, 2, -1, -1, isStorageModeOn};
}

/// A machine of a fleet whose daemon does what the test says.
struct FleetModelTest : testing::Test {
    FakePlatform machine;
    ManualLoop& loop = *machine.loop;
    std::shared_ptr<FakeRecords> records = machine.recordStores->records;
    std::shared_ptr<FakeCloudDatabase> database = std::make_shared<FakeCloudDatabase>(records, machine.loop);
    CloudKitManager& manager = CloudKitManager::shared();
    std::shared_ptr<FakeDaemonClient> daemon = std::make_shared<FakeDaemonClient>();
    BatteryModel model{daemon, nullptr};
    ChargingSettings held; ///< by the daemon

    FleetModelTest()
    {
        daemon->answer(ownState());
        machine.settle();
    }

    void join() { manager.useDatabase(database, "ME"); }
    /// Has joined long ago, and shows itself.
    void settleIn()
    {
        model.selectedDeviceID.set("ME");
        join();
        tell();
        tick();
        loop.advance(2s);
        daemon->sent.clear();
    }
    void tick()
    {
        model.syncFleetNow();
        machine.settle();
    }
    /// The daemon announces to all what it holds, as its answer to this machine or by the wish of others.
    void tell(SettingsMask byOthers = {})
    {
        model.followSettings(held);
        model.fleet().settingsTold({.held = held, .byOthers = byOthers});
        machine.settle();
    }
    void take(const ChargingSettings& settings)
    {
        held = settings;
        tell();
    }
    void refuse()
    {
        model.followSettings(held);
        model.fleet().settingsTold({.held = held, .isAnswer = true});
        machine.settle();
    }

    void store(const std::string& device, CloudRecord::Fields fields) const
    {
        CloudRecord record(field::type, field::nameOf(device));
        for (auto& [name, value] : fields) record.set(name, value);
        records->merge(record);
    }
    /// Another machine's, `age` seconds ago.
    void command(CloudRecord::Fields values, double age = 0, const std::string& origin = "Desk (DESK)")
    {
        values.insert_or_assign(field::commandTimestamp, machine.clock->now() + -age);
        values.insert_or_assign(field::commandOrigin, origin);
        store("ME", values);
    }
    const CloudRecord& own() const { return *records->find("DeviceStatus_ME"); }
    std::optional<double> commandedLimit() const { return own().value<double>(field::remoteChargeLimit); }
};

TEST_F(FleetModelTest, TicksWhileThereIsADatabaseAndKeepsWhatIsSelected)
{
    EXPECT_EQ(loop.pendingTimers(), 1U) << "the settings that the daemon told, and no tick";
    loop.advance(1h);
    EXPECT_EQ(loop.pendingTimers(), 0U);
    for (const auto* device : {"DESK", "ME", "SHELF"}) store(device, {{field::percentage, 30.0}});
    model.thermalState.set(ThermalMonitorService::ThermalState::serious);
    join();
    loop.advance(59s);
    EXPECT_THAT(database->calls, IsEmpty());
    loop.advance(1s);
    EXPECT_THAT(database->calls, ElementsAre("fetch DeviceStatus_ME", "fetch DeviceStatus_ME", "query",
                                             "save DeviceStatus_ME"));
    EXPECT_EQ(own().value<double>(field::percentage), 71);
    EXPECT_EQ(own().value<std::string>(field::thermalState), "Serious");
    EXPECT_THAT(model.fleetStates.get(), SizeIs(3));
    EXPECT_EQ(model.selectedDeviceID.get(), "DESK");
    EXPECT_EQ(model.percentage.get(), 30);
    daemon->answer(ownState());
    machine.settle();

    std::ranges::reverse(records->stored);
    daemon->onStateChange = nullptr;
    tick();
    EXPECT_EQ(model.selectedDeviceID.get(), "DESK");
    EXPECT_EQ(model.percentage.get(), 71);
    model.selectedDeviceID.set("DESK");
    EXPECT_FALSE(daemon->onStateChange) << "as it was";
    model.selectedDeviceID.set("SHELF");
    EXPECT_TRUE(daemon->onStateChange) << "heard anew";
    database->isFailing = true;
    tick();
    EXPECT_THAT(model.fleetStates.get(), IsEmpty());
    EXPECT_EQ(model.selectedDeviceID.get(), "SHELF");
    database->isFailing = false;
    tick();
    model.selectedDeviceID.set(std::nullopt);
    tick();
    EXPECT_FALSE(model.selectedDeviceID.get()) << "there is one first refresh";
    EXPECT_EQ(model.percentage.get(), 71);
    manager.leave([](bool) {});
    loop.advance(1h);
    EXPECT_THAT(model.fleetStates.get(), IsEmpty());
    EXPECT_EQ(loop.pendingTimers(), 0U) << "nobody wakes for nothing";
}

TEST_F(FleetModelTest, AFreshCommandIsAppliedAtEachTickAndSentAtOnce)
{
    settleIn();
    const struct {
        CloudRecord::Fields values;
        double age;
        ChargingSettings wanted;
    } cases[] = {
        {{{field::remoteChargeLimit, 49.9}}, 0, {}},
        {{{field::remoteChargeLimit, 100.1}}, 0, {}},
        {{{field::remoteChargeLimit, 50.0}}, 299, {.customChargeLimit = 50}},
        {{{field::remoteChargeLimit, 100.0}}, -1e6, {.customChargeLimit = 100}},
        {{{field::remoteChargeLimit, 60.0}, {field::remoteAppleMode, false}}, 300, {}},
        {{{field::remoteChargeLimit, 60.0}, {field::remoteAppleMode, false}},
         0,
         {.isAppleRecommendedMode = false, .customChargeLimit = 60}},
        {{{field::isStorageModeEnabled, true}}, 0, {.isStorageModeEnabled = true}},
        {{{field::remoteAppleMode, "off"}}, 0, {}},
    };
    for (const auto& [values, age, wanted] : cases) {
        std::erase_if(records->stored, [](const auto& record) { return record.name() == "DeviceStatus_ME"; });
        take({});
        loop.advance(1s); // what the last case left is sent
        command(values, age);
        daemon->sent.clear();
        tick();
        if (wanted == ChargingSettings{})
            EXPECT_THAT(daemon->sent, IsEmpty());
        else
            EXPECT_THAT(daemon->sent, ElementsAre(ChargingSettings{}, wanted)) << "with no time passing";
        daemon->push(ownState()); // something undoes it, or the daemon refuses
        machine.settle();
        refuse();
        daemon->sent.clear();
        tick();
        EXPECT_EQ(daemon->sent.empty(), wanted == ChargingSettings{}) << "it has no memory";
    }
    model.fleet().acceptCommands(false);
    command({{field::remoteChargeLimit, 66.0}});
    tick();
    EXPECT_NE(model.customChargeLimit.get(), 66);
}

/// Storage mode on, docked, and another machine in the first place of the list.
TEST_F(FleetModelTest, SendsNothingOfAnotherMachineShownFirst)
{
    held = {.isStorageModeEnabled = true};
    tell();
    daemon->push(ownState(80, true));
    loop.advance(1s);
    daemon->sent.clear();
    store("DESK", {{field::percentage, 3.0}, {field::isCharging, true}});
    join();
    tick();
    EXPECT_EQ(model.percentage.get(), 3);
    EXPECT_FALSE(model.isStorageModeEnabled.get());
    EXPECT_EQ(own().value<double>(field::percentage), 71) << "uploaded before";

    database->calls.clear();
    const auto questions = daemon->stateRequests.size();
    manager.leave([](bool) {});
    loop.advance(FleetPolling::patience);
    EXPECT_GT(daemon->stateRequests.size(), questions) << "whatever becomes of the database";
    join();
    loop.advance(1min);
    command({{field::remoteChargeLimit, 60.0}, {field::remoteAppleMode, true}});
    loop.advance(2min);
    EXPECT_EQ(machine.log->count("The daemon does not answer"), 1U);
    EXPECT_THAT(daemon->sent, IsEmpty()) << "until the daemon has answered";
    EXPECT_THAT(database->calls, testing::Each(testing::Not(testing::StartsWith("save"))));
    EXPECT_EQ(model.customChargeLimit.get(), 80);
    const auto asked = daemon->stateRequests.size();
    const auto ofTheOneThatWent = daemon->stateRequests.back();
    model.fleet().daemonAppeared();
    EXPECT_EQ(daemon->stateRequests.size(), asked + 1);
    ofTheOneThatWent(ownState(33, false));
    machine.settle();
    EXPECT_THAT(daemon->sent, IsEmpty());
    EXPECT_EQ(model.percentage.get(), 3);

    daemon->stateRequests.back()(ownState(80, true));
    machine.settle();
    EXPECT_EQ(own().value<double>(field::percentage), 71) << "what was to be sent is sent now";
    EXPECT_EQ(daemon->sent.at(1), (ChargingSettings{.isStorageModeEnabled = true, .customChargeLimit = 60}));
    loop.advance(3min);
    for (const auto& sent : daemon->sent) EXPECT_TRUE(sent.isStorageModeEnabled);
    EXPECT_EQ(own().value<bool>(field::storageModeInForce), true);
}

TEST_F(FleetModelTest, APersonsChangeOutlivesTheFirstRefresh)
{
    held = {.isStorageModeEnabled = true};
    tell();
    loop.advance(1s);
    daemon->sent.clear();
    store("DESK", {});
    join();
    command({{field::remoteChargeLimit, 60.0}, {field::remoteAppleMode, false}});
    tick();
    model.asPerson([&] {
        model.customChargeLimit.set(75);
        model.notifyOnCycle.set(true);
        model.syncSettingsToDaemon();
    });
    held.notifyOnCycle = true;
    model.asPerson([&] { model.customHysteresis.set(9); });
    held.customHysteresis = 5; // later, by velmoractl
    tell(differing({}, {.customHysteresis = 5}));
    loop.advance(5s);
    EXPECT_THAT(daemon->sent, IsEmpty());
    daemon->stateRequests.back()({71, false, "AC", "Fair", 80, 5, -1, -1, true});
    machine.settle();
    const ChargingSettings wanted{
        .isStorageModeEnabled = true, .customChargeLimit = 75, .customHysteresis = 5, .notifyOnCycle = true};
    EXPECT_THAT(daemon->sent, ElementsAre(wanted)) << "the owner's, rather than the command's";
    EXPECT_EQ(daemon->persons, 1U) << "who may be asked for a password";
    take(wanted);
    EXPECT_EQ(commandedLimit(), 75);
    tick();
    EXPECT_EQ(model.customChargeLimit.get(), 75);
}

/// Where nothing is shown first nothing waits.
TEST_F(FleetModelTest, ACommandDoesNotWaitForAListingThatFailed)
{
    command({{field::remoteChargeLimit, 60.0}});
    join();
    database->unreadable = {"DeviceStatus_ME"};
    tick();
    EXPECT_EQ(model.customChargeLimit.get(), 60);
    EXPECT_EQ(daemon->sent.back().customChargeLimit, 60);
}

TEST_F(FleetModelTest, TheOwnerAtTheMachineWins)
{
    settleIn();
    const auto commanded = [&](double limit) {
        loop.advance(1s);
        command({{field::remoteChargeLimit, limit}, {field::remoteAppleMode, true}});
        tick();
        EXPECT_EQ(model.customChargeLimit.get(), limit);
        take({.customChargeLimit = limit});
    };
    const auto setByHand = [&](double limit) {
        loop.advance(1s);
        model.asPerson([&] {
            model.customChargeLimit.set(limit);
            model.syncSettingsToDaemon();
        });
    };
    commanded(60);
    setByHand(75);
    tick();
    EXPECT_EQ(model.customChargeLimit.get(), 75) << "while the person types a password";
    EXPECT_EQ(commandedLimit(), 60);
    take({.customChargeLimit = 75});
    EXPECT_EQ(commandedLimit(), 75);
    EXPECT_EQ(own().value<bool>(field::isStorageModeEnabled), false) << "all of the local values";
    EXPECT_EQ(own().value<std::string>(field::commandOrigin), "Study (ME)");

    database->isHeldUp = true; // the next one is written behind a tick that reads this one
    model.syncFleetNow();
    setByHand(78);
    take({.customChargeLimit = 78});
    database->letGo();
    machine.settle();
    EXPECT_EQ(model.customChargeLimit.get(), 78);
    EXPECT_EQ(commandedLimit(), 78);
    tick();
    EXPECT_EQ(machine.log->count("Took over"), 1U) << "that it does what it wants itself is no news";

    loop.advance(5min);
    command({{field::remoteChargeLimit, 61.0}});
    setByHand(79); // before the command was read
    take({.customChargeLimit = 79});
    database->isFailing = true;
    tick();
    EXPECT_EQ(commandedLimit(), 61);
    database->isFailing = false;
    for (int times = 0; times < 2; ++times) tick();
    EXPECT_EQ(model.customChargeLimit.get(), 79);
    EXPECT_EQ(commandedLimit(), 79);

    commanded(61);
    held.customChargeLimit = 88; // by velmoractl
    tell(differing({}, {.customChargeLimit = 88}));
    EXPECT_EQ(commandedLimit(), 88);
    held.notifyOnHeat = false; // nobody commands that
    commanded(62);
    tell(differing({}, {.notifyOnHeat = false}));
    EXPECT_EQ(commandedLimit(), 62);

    setByHand(90);
    refuse();
    EXPECT_EQ(commandedLimit(), 62) << "neither the wish nor what a refusal assigned";
    daemon->push(ownState(99));
    loop.advance(1s);
    EXPECT_EQ(commandedLimit(), 62) << "nor what a push did";
    tick();
    EXPECT_EQ(model.customChargeLimit.get(), 62) << "and so the command is still in force";
    setByHand(70);
    loop.advance(5min);
    take({.customChargeLimit = 70});
    setByHand(71);
    take({.customChargeLimit = 71});
    EXPECT_EQ(commandedLimit(), 62) << "it is over";
}

TEST_F(FleetModelTest, TellsWhatTheDaemonHoldsAndLogsWhoseCommandItTook)
{
    join();
    tell();
    loop.advance(5s);
    EXPECT_EQ(records->find("DeviceStatus_ME"), nullptr) << "not before there is a state";
    model.selectedDeviceID.set("ME");
    settleIn();
    const auto recorded = [&] { return DeviceReport(own()).inForce; };
    SettingsInForce wanted{.limit = 80, .isAutoProtectOn = true, .acceptsCommands = true};
    EXPECT_EQ(recorded(), wanted);

    command({{field::remoteChargeLimit, 60.0},
             {field::remoteAppleMode, false},
             {field::isStorageModeEnabled, true}},
            3, "De\nsk\xe2\x80\xae\xff" + std::string(500, '!'));
    const auto given = own().value<Date>(field::commandTimestamp);
    tick();
    loop.advance(2s);
    EXPECT_EQ(recorded(), wanted) << "what was merely sent is not in force";
    refuse();
    EXPECT_EQ(machine.log->count("Took over"), 0U);
    for (int times = 0; times < 2; ++times) tick();
    EXPECT_EQ(machine.log->count("Could not take over a command of De sk"), 1U);
    EXPECT_FALSE(recorded()->acceptsCommands) << "as long as the daemon obeys none";
    take({.isAppleRecommendedMode = false, .isStorageModeEnabled = true, .customChargeLimit = 60});
    loop.advance(2s);
    wanted = {.limit = 60, .isStorageModeOn = true, .acceptsCommands = true, .commandTaken = given};
    EXPECT_EQ(recorded(), wanted);
    for (int times = 0; times < 3; ++times) tick();
    join();
    tick();
    EXPECT_EQ(machine.log->count("Took over a command of De sk?!!"), 1U) << "as after a restart";
    EXPECT_EQ(machine.log->count("!, given at 2025-01-01T00:00:0"), 2U);
    EXPECT_EQ(machine.log->count(": limit 60 %, Auto-Protect off, storage mode on"), 2U);

    model.fleet().acceptCommands(false);
    loop.advance(2s);
    wanted.acceptsCommands = false;
    EXPECT_EQ(recorded(), wanted);
    model.fleet().acceptCommands(true);
    model.daemonGone();
    store("ME", {{field::percentage, 12.0}});
    tick();
    loop.advance(2s);
    EXPECT_EQ(recorded(), wanted) << "nobody is there to obey";
    EXPECT_EQ(own().value<double>(field::percentage), 12) << "nor to tell the level";
    tell();
    daemon->push(ownState(60));
    loop.advance(2s);
    command({{field::remoteChargeLimit, 40.0}, {field::isStorageModeEnabled, true}}, 0, "Liar (ME)");
    tick();
    EXPECT_EQ(machine.log->count("Took over a command of Liar (ME)"), 1U) << "but for the limit";
    records->stored.clear(); // by another machine
    held.isAppleRecommendedMode = true;
    tell();
    loop.advance(2s);
    EXPECT_THAT(records->stored, IsEmpty()) << "no machine without a battery";
    for (int times = 0; times < 2; ++times) tick();
    EXPECT_TRUE(recorded()->isAutoProtectOn);
    command({{field::remoteChargeLimit, 55.0}}, 200);
    tick();
    refuse();
    loop.advance(2min);
    EXPECT_FALSE(recorded()->acceptsCommands);
    model.daemonGone();
    tell();
    daemon->push(ownState());
    loop.advance(2min);
    EXPECT_TRUE(recorded()->acceptsCommands) << "another daemon may obey";
    store("ME", {{field::limitInForce, 1.0}});
    tick();
    EXPECT_EQ(recorded()->limit, 60) << "somebody else has written it";
    database->calls.clear();
    tick();
    EXPECT_THAT(database->calls, ElementsAre("fetch DeviceStatus_ME", "fetch DeviceStatus_ME", "query",
                                             "save DeviceStatus_ME"))
        << "the state alone, where nothing is new";
}

TEST(CloudBatteryServiceTest, ReadsThisMachinesRecordOnceAMinute)
{
    FakePlatform machine;
    auto& records = *machine.recordStores->records;
    const auto database = std::make_shared<FakeCloudDatabase>(machine.recordStores->records, machine.loop);
    std::vector<double> told;
    auto service = std::make_unique<CloudBatteryService>();
    service->startMonitoring([&](const auto& state) { told.push_back(state.percentage); });
    CloudKitManager::shared().useDatabase(database, "ME");
    machine.loop->advance(1min); // it has never uploaded its state
    const auto store = [&](double percentage) {
        CloudRecord record(field::type, "DeviceStatus_ME");
        record.set(field::percentage, percentage);
        records.merge(record);
    };
    store(41);
    machine.loop->advance(1min);
    store(42);
    service->startMonitoring([&](const auto& state) {
        EXPECT_EQ(state.powerSource, "Cloud");
        told.push_back(100 + state.percentage);
    });
    machine.settle();
    machine.loop->advance(1min);
    EXPECT_THAT(told, ElementsAre(41, 142, 142)) << "at once, then by one timer";
    service->update();
    service.reset();
    machine.loop->advance(5min);
    EXPECT_THAT(told, SizeIs(3)) << "the answer comes too late";
}

} // namespace
} // namespace velmora
