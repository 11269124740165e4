// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakePlatform.h"
#include "fleet/EcosystemSync.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;
namespace field = device_record;

/// A machine with a database over records that others may share.
struct CloudKitManagerTest : testing::Test {
    FakePlatform machine;
    std::shared_ptr<FakeRecords> records = machine.recordStores->records;
    std::shared_ptr<FakeCloudDatabase> database = std::make_shared<FakeCloudDatabase>(records, machine.loop);
    CloudKitManager manager;

    CloudKitManagerTest() { manager.useDatabase(database, "ME"); }

    const CloudRecord& recordOf(const std::string& device) const
    {
        return *records->find(field::nameOf(device));
    }
    void store(const std::string& name, CloudRecord::Fields fields = {}) const
    {
        records->stored.emplace_back(field::type, name, std::move(fields));
    }
    std::vector<SharedBatteryState> list()
    {
        std::vector<SharedBatteryState> listed;
        manager.fetchAllDeviceStates([&](auto states) { listed = std::move(states); });
        machine.settle();
        return listed;
    }
};

TEST_F(CloudKitManagerTest, UploadsOneAtATimeAndLeavesCommandsAlone)
{
    manager.syncRemoteControl(60, true, true, std::nullopt);
    machine.settle();
    database->calls.clear();
    database->isHeldUp = true;
    manager.syncState(41.5, true, "Fair");
    manager.syncState(99, false, "Critical"); // dropped
    EXPECT_TRUE(manager.isSyncing.get());
    EXPECT_FALSE(manager.lastSyncDate.get());
    machine.loop->advance(std::chrono::seconds{5});
    database->letGo();
    machine.settle();
    EXPECT_FALSE(manager.isSyncing.get());
    EXPECT_EQ(manager.lastSyncDate.get(), ManualClock::start + 5);
    EXPECT_THAT(database->calls, ElementsAre("fetch DeviceStatus_ME", "save DeviceStatus_ME"));
    const auto& record = recordOf("ME");
    EXPECT_EQ(record.type(), "DeviceStatus");
    EXPECT_EQ(record.value<double>(field::percentage), 41.5);
    EXPECT_EQ(record.value<bool>(field::isCharging), true);
    EXPECT_EQ(record.value<std::string>(field::thermalState), "Fair");
    EXPECT_EQ(record.value<std::string>(field::deviceName), "Study");
    EXPECT_EQ(record.value<Date>(field::lastUpdate), ManualClock::start + 5);
    EXPECT_EQ(record.value<double>(field::remoteChargeLimit), 60) << "the command stays";

    database->isFailingToFetch = true; // the record is there all the same
    manager.syncState(42, true, "Fair");
    machine.settle();
    EXPECT_EQ(recordOf("ME").value<double>(field::percentage), 42);
    EXPECT_EQ(recordOf("ME").value<double>(field::remoteChargeLimit), 60);

    database->isFailingToFetch = false;
    database->nonsense = "DeviceStatus_ME";
    manager.syncState(43, true, "Fair");
    machine.settle();
    EXPECT_THAT(list(), SizeIs(1)) << "nonsense is replaced";
    EXPECT_EQ(recordOf("ME").value<double>(field::remoteChargeLimit), std::nullopt);
}

TEST_F(CloudKitManagerTest, SaysOnceWhatFails)
{
    database->isFailing = true;
    for (int tick = 0; tick < 3; ++tick) {
        manager.syncState(50, true, "Nominal");
        machine.settle();
        EXPECT_THAT(list(), IsEmpty());
    }
    EXPECT_FALSE(manager.isSyncing.get());
    EXPECT_FALSE(manager.lastSyncDate.get());
    EXPECT_EQ(manager.lastFault.get(), RecordFault::unreachable);
    EXPECT_EQ(machine.log->count("CloudKit sync error: the store is broken"), 1U);
    EXPECT_EQ(machine.log->count("CloudKit fetchAll error: the store is broken"), 1U);
    database->isFailing = false;
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_EQ(manager.lastFault.get(), RecordFault::none);
    database->isFailing = true;
    list();
    EXPECT_EQ(machine.log->count("CloudKit fetchAll error"), 2U) << "a new failure";
    machine.log->clear();
    manager.syncRemoteControl(60, true, true, "OTHER");
    manager.fetchLatestState(std::nullopt, [](const auto& state) { EXPECT_FALSE(state); });
    machine.settle();
    EXPECT_EQ(machine.log->count(), 0U) << "neither is reported";
}

TEST_F(CloudKitManagerTest, AnotherDatabaseFreesAnUploadThatHung)
{
    database->isHeldUp = true;
    manager.syncState(50, true, "Nominal");
    auto next = std::make_shared<FakeCloudDatabase>(records, machine.loop);
    manager.useDatabase(next, "ME");
    EXPECT_FALSE(manager.isSyncing.get());
    database->letGo();
    machine.settle();
    EXPECT_THAT(records->stored, IsEmpty()) << "the old upload is over";
    manager.syncState(51, true, "Nominal");
    machine.settle();
    EXPECT_THAT(records->stored, SizeIs(1));
}

TEST_F(CloudKitManagerTest, ReadsWhateverARecordHolds)
{
    store("DeviceStatus_A", {{field::percentage, std::string("full")},
                             {field::isCharging, 1.0},
                             {field::thermalState, std::string("Serious")},
                             {field::deviceName, "Attic\n\x1b" + std::string(254, 'c') + "\u00e9"},
                             {field::lastUpdate, Date{7}},
                             {field::commandTimestamp, 7.0}});
    store("DeviceStatus_lost");
    store("DeviceStatus_DeviceStatus_");
    store("stray", {{field::limitInForce, 80.0},
                    {field::autoProtectInForce, true},
                    {field::storageModeInForce, false},
                    {field::acceptsCommands, true}});
    database->unreadable = {"DeviceStatus_lost"};
    const auto states = list();
    ASSERT_THAT(states, SizeIs(3));
    SharedBatteryState expected{.percentage = 0, .powerSource = "Cloud"};
    expected.deviceID = "A";
    expected.deviceName = "Attic  " + std::string(248, 'c');
    expected.thermalState = "Serious";
    EXPECT_EQ(states[0], expected);
    EXPECT_THAT(states[1].deviceID, Optional(std::string()));
    EXPECT_THAT(states[2].deviceID, Optional(std::string("stray")));
    const auto& devices = manager.devices.get();
    ASSERT_THAT(devices, SizeIs(3));
    EXPECT_EQ(devices[0].lastUpdate, Date{7});
    EXPECT_FALSE(devices[0].inForce);
    const SettingsInForce inForce{.limit = 80, .isAutoProtectOn = true, .acceptsCommands = true};
    EXPECT_EQ(devices[2].inForce, inForce);
}

TEST_F(CloudKitManagerTest, WithoutADatabaseAllIsAnsweredAtOnceWithNothing)
{
    manager.useDatabase(nullptr, "ME");
    int answers = 0;
    manager.syncState(50, true, "Nominal");
    manager.syncRemoteControl(60, true, true, "OTHER");
    manager.fetchLatestState("OTHER", [&](const auto& state) { answers += state ? 0 : 1; });
    manager.fetchAllDeviceStates([&](const auto& states) { answers += states.empty() ? 1 : 0; });
    EXPECT_EQ(answers, 2);
    EXPECT_FALSE(manager.isSyncing.get());
    machine.settle();
    EXPECT_THAT(records->stored, IsEmpty());
}

TEST_F(CloudKitManagerTest, WhoHasLeftIsNotBroughtBackByAnUpload)
{
    store("DeviceStatus_OTHER");
    manager.syncState(50, true, "Nominal");
    machine.settle();
    manager.syncState(51, true, "Nominal"); // under way when it leaves
    std::optional<bool> isGone;
    manager.leave([&](bool gone) { isGone = gone; });
    EXPECT_FALSE(manager.hasDatabase.get());
    database.reset(); // its answer keeps it
    machine.settle();
    EXPECT_EQ(isGone, true);
    ASSERT_THAT(records->stored, SizeIs(1));
    EXPECT_EQ(records->stored[0].name(), "DeviceStatus_OTHER");
}

struct EcosystemSyncTest : testing::Test {
    FakePlatform machine;
    FakeRecordStores& stores = *machine.recordStores;
    FakePreferences& preferences = *machine.preferences;
    CloudKitManager& manager = CloudKitManager::shared();
    std::optional<EcosystemSync> sync;
    int begun = 0;

    EcosystemSync& start()
    {
        sync.emplace(manager).onBegun = [this] { ++begun; };
        machine.settle();
        return *sync;
    }
    static RecordPlace server()
    {
        return {.kind = RecordPlace::Kind::server, .host = "db.example", .port = 5433, .user = "ada"};
    }
    void store(const std::string& device, CloudRecord::Fields fields) const
    {
        stores.records->stored.emplace_back(field::type, field::nameOf(device), std::move(fields));
    }
};

TEST_F(EcosystemSyncTest, NothingIsOpenedBeforeAPersonTurnsItOn)
{
    start();
    EXPECT_THAT(stores.places, IsEmpty());
    EXPECT_FALSE(manager.hasDatabase.get());
    EXPECT_NE(sync->deviceID.get(), "");
    sync->turnOn();
    EXPECT_TRUE(manager.hasDatabase.get());
    EXPECT_EQ(manager.currentDeviceID(), sync->deviceID.get());
    EXPECT_EQ(begun, 1);
    EXPECT_THAT(stores.places, ElementsAre(RecordPlace{}));

    start(); // another life
    EXPECT_TRUE(manager.hasDatabase.get());
    EXPECT_EQ(begun, 1) << "nobody looks";
    sync->leave();
    EXPECT_TRUE(sync->isLeaving.get());
    machine.settle();
    EXPECT_FALSE(sync->isLeaving.get());
    EXPECT_FALSE(sync->isRecordLeft.get());
    EXPECT_FALSE(manager.hasDatabase.get());
    EXPECT_FALSE(start().isOn.get());
    EXPECT_EQ(machine.log->count("Could not remove"), 0U);
}

TEST_F(EcosystemSyncTest, ARecordIsTakenAwayWhereTheMachineLeavesOrSaidToBeLeft)
{
    start().turnOn();
    const auto upload = [this] {
        manager.syncState(50, true, "Nominal");
        machine.settle();
    };
    upload();
    sync->use(server(), std::nullopt);
    EXPECT_TRUE(manager.hasDatabase.get()) << "the new place waits for nothing";
    machine.settle();
    EXPECT_THAT(stores.records->stored, IsEmpty()) << "the old place's, in this test the same";
    upload();
    auto trusted = server();
    trusted.trust = RecordPlace::Trust::certificate;
    sync->use(trusted, std::nullopt); // the same records in another way
    machine.settle();
    EXPECT_THAT(stores.records->stored, SizeIs(1));
    stores.opened.lock()->isFailing = true;
    sync->leave();
    machine.settle();
    EXPECT_TRUE(sync->isRecordLeft.get());
    EXPECT_FALSE(sync->isLeaving.get());
    EXPECT_EQ(machine.log->count("Could not remove"), 1U);
}

TEST_F(EcosystemSyncTest, AtLogInItWaitsForTheSecretStore)
{
    preferences.set(preference_key::isEcosystemSyncOn, true);
    machine.secretStore->holdsReady = true;
    start();
    EXPECT_THAT(stores.places, IsEmpty());
    machine.secretStore->becomeReady();
    machine.settle();
    EXPECT_THAT(stores.places, SizeIs(1));
    stores.isMissing = true;
    start();
    machine.secretStore->becomeReady();
    machine.settle();
    EXPECT_FALSE(manager.hasDatabase.get());
    EXPECT_EQ(sync->fault.get(), RecordFault::noModule);
}

TEST_F(EcosystemSyncTest, AServerIsUsedOnceItsPasswordIsKept)
{
    start().turnOn();
    machine.secretStore->isAvailable = false;
    sync->use(server(), "rosebud");
    machine.settle();
    EXPECT_EQ(sync->fault.get(), RecordFault::noPassword);
    EXPECT_EQ(sync->place.get(), RecordPlace{}) << "no password, no server";
    EXPECT_EQ(machine.log->count("secret store did not take"), 1U);
    EXPECT_EQ(machine.log->count("rosebud"), 0U);

    machine.secretStore->isAvailable = true;
    sync->use(server(), "rosebud");
    machine.settle();
    EXPECT_EQ(sync->fault.get(), RecordFault::none);
    EXPECT_EQ((machine.secretStore->items[{"app.velmora.cloud", "ada@db.example:5433/velmora"}]), "rosebud");
    EXPECT_EQ(stores.places.back(), server());
    sync->test(server(), std::nullopt);
    machine.settle();
    EXPECT_EQ(stores.testPassword, "rosebud");
    EXPECT_THAT(sync->testResult.get(), Optional(RecordFault::none));
    for (const auto& [key, text] : preferences.texts) EXPECT_EQ(text.find("rosebud"), std::string::npos);
    EXPECT_EQ(start().place.get(), server());

    for (auto broken : {RecordPlace{.host = ""}, RecordPlace{.host = "a b", .user = "u"},
                        RecordPlace{.host = "/tmp", .user = "u"}, RecordPlace{.host = "h", .user = "u\nv"},
                        RecordPlace{.host = "h", .user = ""}}) {
        broken.kind = RecordPlace::Kind::server;
        sync->use(broken, std::nullopt);
        EXPECT_EQ(sync->fault.get(), RecordFault::other);
        EXPECT_EQ(sync->place.get(), server());
    }
    preferences.setText(preference_key::recordUser, "");
    EXPECT_EQ(start().place.get().kind, RecordPlace::Kind::thisComputer);
}

TEST_F(EcosystemSyncTest, CommandsAndRemovalsGoOnlyWhereTheyMay)
{
    const auto now = ManualClock::start;
    CloudRecord::Fields fields{{field::limitInForce, 80.0},
                               {field::autoProtectInForce, true},
                               {field::storageModeInForce, false},
                               {field::acceptsCommands, true},
                               {field::lastUpdate, now + -599}};
    store("WILLING", fields);
    fields[field::acceptsCommands] = false;
    fields[field::lastUpdate] = now + -600;
    store("DEAF", fields);
    store("UNKNOWN", {});
    fields[field::acceptsCommands] = true;
    fields[field::limitInForce] = 40.0;
    fields[field::lastUpdate] = now + 601; // its clock was ahead
    store("LOW", fields);
    store("DeviceStatus_WILLING", {}); // read as WILLING's
    stores.records->stored.emplace_back(field::type, "stray");
    start().turnOn();
    EXPECT_FALSE(sync->command("WILLING", 60, true, false)) << "not listed yet";
    manager.fetchAllDeviceStates([](const auto&) {});
    machine.settle();
    for (const double limit : {49.9, 100.1, std::nan("")})
        EXPECT_FALSE(sync->command("WILLING", limit, true, false)) << limit;
    for (const auto* device : {"DEAF", "UNKNOWN", "NOBODY"})
        EXPECT_FALSE(sync->command(device, 60, true, false)) << device;
    EXPECT_TRUE(sync->command("WILLING", 60, true, false));
    EXPECT_TRUE(sync->removeDevice("DEAF"));
    EXPECT_TRUE(sync->removeDevice("UNKNOWN"));
    machine.settle();
    EXPECT_TRUE(sync->command("LOW", 40, true, true)) << "what is in force there may stay";
    EXPECT_FALSE(sync->command("LOW", 41, true, true));
    machine.settle();
    EXPECT_TRUE(sync->removeDevice("LOW"));
    EXPECT_TRUE(sync->removeDevice("WILLING")) << "the one that nobody hears of";
    EXPECT_TRUE(sync->removeDevice("stray"));
    manager.fetchAllDeviceStates([](const auto&) {});
    machine.settle();
    EXPECT_FALSE(sync->removeDevice("WILLING")) << "heard of just now";
    ASSERT_THAT(stores.records->stored, SizeIs(1));
    EXPECT_EQ(stores.records->stored[0].name(), "DeviceStatus_WILLING");
    EXPECT_EQ(stores.records->stored[0].value<double>(field::remoteChargeLimit), 60);
}

} // namespace
} // namespace velmora
