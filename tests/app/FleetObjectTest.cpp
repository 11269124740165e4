// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SessionTest.h"
#include "bus/Exports.h"
#include "bus/Records.h"
#include "fleet/FleetArchive.h"

namespace velmora {
namespace {

namespace wired = wire::face::fleet;

struct FleetObjectTest : SessionTest {
    FleetObjectTest()
    {
        exports::serve(object, sync, manager, [] {});
        sync.turnOn();
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

    FakePlatform machine;
    CloudKitManager manager;
    EcosystemSync sync{manager};
    ExportedObject object{loop, application.get(), wired::face};
};

TEST_F(FleetObjectTest, TakesNothingThatMakesNoSense)
{
    const RecordPlace server{.kind = RecordPlace::Kind::server, .host = "records.example", .user = "ada"};
    EXPECT_EQ(operate(wired::test, archived(server)), "");
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
    EXPECT_EQ(sync.place.get(), RecordPlace{});

    DeviceReport other;
    other.recordName = device_record::nameOf("OTHER");
    other.state.deviceID = "OTHER";
    other.lastUpdate = machine.clock->now();
    other.inForce = {.limit = 80, .acceptsCommands = true};
    manager.devices.set({other});
    for (const auto& wrong :
         {FleetCommand{"OTHER", 49, true, false}, FleetCommand{"NOBODY", 60, true, false}})
        EXPECT_EQ(operate(wired::command, archived(wrong)), SD_BUS_ERROR_INVALID_ARGS) << wrong.limit;
    KeyedArchive half;
    half.encode(wired::device_key::deviceID, std::string("OTHER"));
    EXPECT_EQ(operate(wired::command, half), SD_BUS_ERROR_INVALID_ARGS) << "the rest is not guessed";
    EXPECT_EQ(operate(wired::removeDevice, half), SD_BUS_ERROR_INVALID_ARGS) << "it was heard of just now";
}

} // namespace
} // namespace velmora
