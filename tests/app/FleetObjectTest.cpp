// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SessionTest.h"
#include "bus/Exports.h"
#include "bus/Records.h"
#include "fleet/FleetArchive.h"

#include <limits>

namespace velmora {
namespace {

namespace wired = wire::face::fleet;

struct FleetObjectTest : SessionTest {
    FleetObjectTest()
    {
        exports::serve(object, sync, manager, [this] { ++refreshes; });
        machine.settle();
    }

    std::string operate(const char* name, const std::optional<KeyedArchive>& record)
    {
        const auto message = call(wired::interface, name, wired::objectPath);
        if (record) dbus::append(message.get(), *record);
        ask(message);
        machine.settle();
        return lastError;
    }

    dbus::Message property(const char* name, const char* type)
    {
        const auto question = call("org.freedesktop.DBus.Properties", "Get", wired::objectPath);
        dbus::check(sd_bus_message_append(question.get(), "ss", wired::interface, name), "append");
        auto reply = ask(question);
        EXPECT_EQ(lastError, "");
        dbus::check(sd_bus_message_enter_container(reply.get(), 'v', type), "enter");
        return reply;
    }

    /// Another machine of the fleet; it was heard of just now.
    DeviceReport other() const
    {
        DeviceReport device;
        device.state = {.percentage = 41.5,
                        .isCharging = true,
                        .powerSource = "Cloud",
                        .deviceID = "OTHER",
                        .deviceName = "Loft",
                        .thermalState = "Fair"};
        device.lastUpdate = machine.clock->now();
        device.inForce = {.limit = 80, .acceptsCommands = true, .commandTaken = Date{7}};
        device.commandOrigin = "Study";
        return device;
    }

    FakePlatform machine;
    CloudKitManager manager;
    EcosystemSync sync{manager};
    int refreshes = 0;
    ExportedObject object{loop, application.get(), wired::face};
};

TEST_F(FleetObjectTest, AServerIsTakenWithItsPasswordAndNothingIsTakenThatMakesNoSense)
{
    RecordPlace server{
        .kind = RecordPlace::Kind::server, .host = "records.example", .port = 6000, .user = "ada"};
    auto record = archived(server);
    record.encode(wired::place_key::password, std::string("secret word"));
    EXPECT_EQ(operate(wired::test, record), "");
    EXPECT_EQ(machine.recordStores->testPassword, "secret word");
    EXPECT_EQ(operate(wired::use, record), "");
    EXPECT_EQ(operate(wired::turnOn, std::nullopt), "");
    EXPECT_EQ(operate(wired::refresh, std::nullopt), "");
    EXPECT_EQ(refreshes, 1);
    EXPECT_EQ(sync.place.get(), server);
    EXPECT_EQ(machine.recordStores->places, std::vector{server});
    EXPECT_EQ(recordPlaceOf(dbus::readArchive(property(wired::place, wire::recordType).get())), server)
        << "read back, without the password";

    const std::vector<std::pair<const char*, KeyedArchive::Value>> nonsense{
        {"port", std::int64_t{65'536}},
        {"port", 5432.0},
        {"kind", "cloud"},
        {"trust", "blind"},
        {"host", std::string{}},
        {"host", true},
        {"user", "a b"},
        {"database", std::string(dbus::maximumTextBytes + 1, 'x')},
    };
    for (const auto& [key, value] : nonsense) {
        auto wrong = archived(server);
        KeyedArchive one;
        one.encode(key, value);
        wrong.update(one);
        EXPECT_EQ(operate(wired::use, wrong), SD_BUS_ERROR_INVALID_ARGS) << key;
    }
    EXPECT_NE(operate(wired::use, std::nullopt), "") << "it takes a record";
    EXPECT_EQ(sync.place.get(), server);
}

TEST_F(FleetObjectTest, DevicesAreToldWholeAndCommandedAsTheyAllow)
{
    sync.turnOn();
    machine.settle();
    auto listed = other();
    listed.recordName = device_record::nameOf("OTHER");
    manager.devices.set({listed, DeviceReport{}});
    const auto reply = property(wired::devices, wire::recordListType);
    dbus::check(sd_bus_message_enter_container(reply.get(), 'a', wire::recordType), "enter");
    EXPECT_EQ(deviceReportOf(dbus::readArchive(reply.get())), other());
    EXPECT_EQ(deviceReportOf(dbus::readArchive(reply.get())).inForce, std::nullopt);

    const FleetCommand fair{.deviceID = "OTHER", .limit = 60, .isAutoProtectOn = true};
    EXPECT_EQ(operate(wired::command, archived(fair)), "");
    const auto* stored = machine.recordStores->records->find(device_record::nameOf("OTHER"));
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->value<double>(device_record::remoteChargeLimit), 60);
    for (auto wrong : {FleetCommand{"OTHER", 49, true, false}, FleetCommand{"NOBODY", 60, true, false},
                       FleetCommand{"OTHER", std::numeric_limits<double>::quiet_NaN(), true, false}})
        EXPECT_EQ(operate(wired::command, archived(wrong)), SD_BUS_ERROR_INVALID_ARGS) << wrong.limit;
    KeyedArchive half;
    half.encode(wired::device_key::deviceID, std::string("OTHER"));
    EXPECT_EQ(operate(wired::command, half), SD_BUS_ERROR_INVALID_ARGS) << "the rest is not guessed";
    EXPECT_EQ(operate(wired::removeDevice, half), SD_BUS_ERROR_INVALID_ARGS) << "it was heard of just now";
    EXPECT_TRUE(machine.recordStores->records->find(device_record::nameOf("OTHER")));
}

} // namespace
} // namespace velmora
