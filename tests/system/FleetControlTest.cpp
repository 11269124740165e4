// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ControlTest.h"
#include "base/SystemClock.h"
#include "bus/Exports.h"
#include "fleet/EcosystemSync.h"

#include <nlohmann/json.hpp>

namespace velmora {
namespace {

namespace field = device_record;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;

/// velmoractl over the fleet of an application that is a part of this test, whose records the test lays.
struct FleetControlTest : ControlTest {
    FleetControlTest() : ControlTest("fleet")
    {
        // velmoractl goes by the time of day.
        machine.loop->advance(std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::duration<double>(SystemClock().now() - ManualClock::start)));
    }
    ~FleetControlTest() override { object.reset(); }

    void startApplication()
    {
        auto& served = ControlTest::startApplication(wire::face::fleet::face);
        const auto list = [this] { manager.fetchAllDeviceStates([](const auto&) {}); };
        sync.onBegun = list;
        exports::serve(served, sync, manager, list);
    }

    /// A machine that has said a while ago what is in force there.
    void lay(const std::string& identifier, const std::string& name, double secondsAgo = 30)
    {
        machine.recordStores->records->stored.emplace_back(
            field::type, field::nameOf(identifier),
            CloudRecord::Fields{{field::percentage, 41.5},
                                {field::deviceName, name},
                                {field::lastUpdate, machine.clock->now() + -secondsAgo},
                                {field::limitInForce, 80.0},
                                {field::autoProtectInForce, false},
                                {field::storageModeInForce, false},
                                {field::acceptsCommands, true}});
    }
    CloudRecord& record(const std::string& identifier) const
    {
        return *machine.recordStores->records->find(field::nameOf(identifier));
    }

    CloudKitManager manager;
    EcosystemSync sync{manager};
};

TEST_F(FleetControlTest, UnderstandsACommandLineOrSaysWhatIsWrong)
{
    const std::tuple<const char*, int, const char*> cases[] = {
        {"rename", 2, "\"fleet\" has no command \"rename\""},
        {"limit", 2, "needs a machine"},
        {"limit Loft", 2, "needs a level"},
        {"limit Loft 49", 2, "from 50 to 100"},
        {"devices --server here", 2, "\"devices\" has no option \"--server\""},
        {"on --port 99", 2, "\"--port\" is about a server"},
        {"on --server 'a b'", 2, "blanks"},
        {"on --server here --port 0", 2, "from 1 to 65535"},
        {"on --server here --trust blindly", 2, "channel-binding"},
        {"on --this-computer --password-file x", 2, "about a server"},
        {"", 3, "Velmora does not run"},
        {"on --json", 3, "\"exitStatus\":3"},
    };
    for (const auto& [words, status, said] : cases) expectOutcome(words, status, said);
}

TEST_F(FleetControlTest, KnowsWhichMachineIsMeantAndKeepsWhatElseIsInForceThere)
{
    startApplication();
    expectOutcome("devices", 1, "velmoractl fleet on");
    expectOutcome("on", 0, "Machines        0");
    lay("1A-LOFT", "Loft");
    lay("1B-VAN", "Van\x1b[31m");
    lay("2C-OLD", "Van\x1b[31m", 700);
    lay("3D-LOW", "Low");
    record("3D-LOW").set(field::limitInForce, 40.0);
    record("3D-LOW").set(field::percentage, -50.0);
    const std::tuple<const char*, int, const char*> cases[] = {
        {"limit attic 60", 1, "No machine of the fleet"},
        {"limit 1 60", 1, "Several machines"},
        {"limit '' 60", 1, "No machine"},
        {"storage loft on", 0, "Loft takes that over"},
        {"limit 1a 60", 0, "Loft takes that over"},
        {"remove Loft", 4, "heard of in the last ten minutes"},
        {"remove 2C", 0, "is forgotten"},
        {"storage Low on", 0, "limit of 40% there stays"},
        {"accept off", 0, "takes no commands"},
        {"devices", 0, "Van"},
    };
    for (const auto& [words, status, said] : cases) expectOutcome(words, status, said);
    EXPECT_EQ(record("1A-LOFT").value<double>(field::remoteChargeLimit), 60);
    EXPECT_EQ(record("1A-LOFT").value<bool>(field::isStorageModeEnabled), true) << "on its way still";
    EXPECT_EQ(record("1A-LOFT").value<bool>(field::remoteAppleMode), true) << "a limit turns it on";
    EXPECT_EQ(record("3D-LOW").value<double>(field::remoteChargeLimit), 40);
    EXPECT_THAT(control("devices").said, Not(HasSubstr("-50")));
    EXPECT_FALSE(record("1B-VAN").value<Date>(field::commandTimestamp));
    EXPECT_EQ(machine.recordStores->records->find(field::nameOf("2C-OLD")), nullptr);
    EXPECT_FALSE(sync.acceptsCommands.get());

    record("1A-LOFT").set(field::acceptsCommands, false);
    expectOutcome("auto-protect Loft off", 4, "takes no commands");
    const auto devices = json::parse(control("devices --json").said, nullptr, false);
    ASSERT_EQ(devices.size(), 3U);
    EXPECT_EQ(devices[0]["isThisMachine"], false);
    EXPECT_THAT(devices[0]["commandTimestamp"].get<std::string>(), testing::EndsWith("Z"));
    EXPECT_TRUE(devices[1]["commandTimestamp"].is_null());
    machine.recordStores->opened.lock()->isFailing = true;
    expectOutcome("devices", 1, "The server does not answer");
}

TEST_F(FleetControlTest, TriesAServerWithThePasswordThatIsTypedAndTakesItOnlyIfItWillDo)
{
    startApplication();
    machine.recordStores->testAnswer = RecordFault::password;
    const std::string server = "on --server records.example --port 6000 --user ada";
    const auto refused = control(server, "open sesame\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.said, HasSubstr("Password of ada at records.example"));
    EXPECT_THAT(refused.said, HasSubstr("User or password is wrong"));
    EXPECT_THAT(refused.said, Not(HasSubstr("sesame"))) << "nothing of it is shown";
    EXPECT_EQ(machine.recordStores->testPassword, "open sesame");
    EXPECT_FALSE(sync.isOn.get());
    EXPECT_EQ(sync.place.get(), RecordPlace{});

    machine.recordStores->testAnswer = RecordFault::none;
    const auto taken = control(server, "open sesame\n");
    EXPECT_EQ(taken.status, 0) << taken.said;
    EXPECT_TRUE(sync.isOn.get());
    EXPECT_EQ(sync.place.get().host, "records.example");
    EXPECT_EQ(sync.place.get().port, 6000);
    SecretItem item{.service = EcosystemSync::passwordService,
                    .account = EcosystemSync::passwordAccount(sync.place.get())};
    EXPECT_EQ(machine.secretStore->copyMatching(item), SecretStatus::success);
    EXPECT_EQ(item.data, "open sesame");

    EXPECT_EQ(control("test --server other.example --user ada", "\x03").status, -1) << "Ctrl-C ends it";
    expectOutcome("test", 0, "It works");
    expectOutcome("off", 0, "left the fleet");
    EXPECT_FALSE(sync.isOn.get());
    sync.turnOn();
    machine.recordStores->opened.lock()->isFailing = true;
    expectOutcome("off", 1, "stays where it was");
    EXPECT_FALSE(sync.isOn.get());
}

} // namespace
} // namespace velmora
