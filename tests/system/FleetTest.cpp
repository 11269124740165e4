// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "CapturedMachine.h"
#include "Dunst.h"
#include "LoopTest.h"
#include "PrivateBus.h"
#include "ShellCommand.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace velmora {
namespace {

using nlohmann::json;
using testing::HasSubstr;

/// A laptop with a daemon and a user who is logged in, and velmora as it runs without a screen.
class Machine {
public:
    Machine(const std::string& name, const std::filesystem::path& records, const std::string& level = "94")
    {
        folder_.write("machine-info", "PRETTY_HOSTNAME=\"" + name + "\"\n");
        auto captured = CapturedMachine::load(std::filesystem::path(VELMORA_MACHINES) /
                                              "thinkpad-x1-extreme-held-at-limit.sysfs");
        captured.values["class/power_supply/BAT0/capacity"] = level;
        captured.values["class/power_supply/BAT0/charge_control_start_threshold"] = "0";
        captured.values["class/power_supply/BAT0/charge_control_end_threshold"] = "100";
        captured.layInto(folder_.path() / "sys");
        const auto& at = folder_.path();
        environment_ = {{"DBUS_SYSTEM_BUS_ADDRESS", system_.address()},
                        {"DBUS_SESSION_BUS_ADDRESS", session_.address()},
                        {"VELMORA_SYSFS", at / "sys"},
                        {"VELMORA_MACHINE_INFO", at / "machine-info"},
                        {"VELMORA_RECORDS", records},
                        {"STATE_DIRECTORY", at / "state"},
                        {"XDG_DATA_HOME", at / "data"},
                        {"XDG_CONFIG_HOME", at / "config"},
                        {"XDG_RUNTIME_DIR", at},
                        {"DISPLAY", ""},
                        {"WAYLAND_DISPLAY", ""},
                        {"VELMORA_LOG", "stderr"}};
        daemon_.emplace(VELMORA_BIN "/velmorad", environment_, at / "log");
        velmora_.emplace(VELMORA_BIN "/velmora", environment_, at / "log");
    }

    /// What a person types there.
    Outcome control(const std::string& words) const
    {
        std::string command = "env";
        for (const auto& [name, value] : environment_) command += " " + name + "='" + value + "'";
        return shell(command + " " VELMORA_BIN "/velmoractl " + words);
    }
    json parsed(const std::string& words) const
    {
        return json::parse(control(words + " --json").said, nullptr, false);
    }

    /// What `device` has told of itself, as this machine sees it; null where it is not listed.
    json seen(const std::string& device) const
    {
        for (const auto& one : parsed("fleet devices"))
            if (one.is_object() && one.value("deviceName", "") == device) return one;
        return {};
    }

    /// It looks for commands, and saves its own state, now rather than within a minute.
    void look() const { EXPECT_EQ(control("fleet on --this-computer").status, 0) << log(); }

    int end() const
    {
        const auto text = folder_.read("sys/class/power_supply/BAT0/charge_control_end_threshold");
        return text.empty() ? -1 : std::stoi(text);
    }
    std::string log() const { return folder_.read("log"); }
    const std::string& session() const { return session_.address(); }

private:
    PrivateBus system_, session_;
    TemporaryFolder folder_;
    Process::Environment environment_;
    std::optional<Process> daemon_, velmora_;
};

struct FleetTest : LoopTest {
    void TearDown() override
    {
        for (const auto* machine : {study ? &*study : nullptr, loft ? &*loft : nullptr})
            if (HasFailure() && machine) std::fputs(machine->log().c_str(), stderr);
    }

    std::filesystem::path records() const { return folder.path() / "cloud.db"; }

    /// Two machines, of which neither takes part yet; the loft's is the first to do so.
    void switchOn(const std::string& loftLevel = "94")
    {
        study.emplace("Study", records());
        loft.emplace("Loft", records(), loftLevel);
        for (const auto* machine : {&*study, &*loft})
            ASSERT_TRUE(eventually([&] {
                return machine->control("fleet").status == 0 && machine->control("status").status == 0 &&
                       machine->end() == 80;
            }));
    }
    /// Both are in the fleet, and know each other.
    void join()
    {
        loft->look();
        study->look();
        ASSERT_TRUE(eventually([this] {
            return study->seen("Loft").contains("limitInForce") &&
                   loft->seen("Study").contains("limitInForce");
        }));
    }
    /// The charger there, once that machine has looked a few times.
    bool becomes(const Machine& machine, int end)
    {
        return eventually([&] {
            machine.look();
            return machine.end() == end;
        });
    }

    TemporaryFolder folder;
    std::optional<Machine> study, loft;
};

TEST_F(FleetTest, ACommandReachesTheOtherCharger)
{
    switchOn();
    EXPECT_FALSE(std::filesystem::exists(records())) << "nobody has turned it on";
    EXPECT_EQ(study->control("fleet limit Loft 60").status, 1) << "nor is there a fleet";
    join();
    EXPECT_THAT(study->control("fleet devices").said, HasSubstr("Study (this machine)"));

    const auto sent = study->control("fleet limit loft 60");
    EXPECT_EQ(sent.status, 0) << sent.said;
    EXPECT_TRUE(becomes(*loft, 60)) << loft->end();
    EXPECT_EQ(study->end(), 80);
    EXPECT_TRUE(eventually([this] {
        const auto there = study->seen("Loft");
        return there["limitInForce"] == 60 && there["commandTaken"] == there["commandTimestamp"];
    })) << study->seen("Loft");
    EXPECT_THAT(loft->log(), HasSubstr("Study")) << "who commanded it";

    // Whoever sits there wins, also while the command is fresh.
    EXPECT_EQ(loft->control("limit 70").status, 0);
    ASSERT_TRUE(eventually([this] { return study->seen("Loft")["limitInForce"] == 70; }));
    loft->look();
    EXPECT_EQ(loft->end(), 70);

    EXPECT_EQ(loft->control("fleet accept off").status, 0);
    ASSERT_TRUE(eventually([this] { return study->seen("Loft")["acceptsCommands"] == false; }));
    EXPECT_EQ(study->control("fleet storage Loft on").status, 4);

    EXPECT_EQ(loft->control("fleet off").status, 0);
    EXPECT_TRUE(eventually([this] { return study->seen("Loft").is_null(); }));
    EXPECT_EQ(study->parsed("fleet status")["machines"], 1);
}

TEST_F(FleetTest, AMachinePutAwayStaysAtHalfWhateverTheFirstOneOfTheFleetHolds)
{
    switchOn();
    loft->look();
    EXPECT_EQ(study->control("storage on").status, 0);
    ASSERT_TRUE(eventually([this] { return study->end() == 50; }));
    for (int tick = 0; tick < 3; ++tick) {
        study->look();
        EXPECT_EQ(study->end(), 50);
    }
    ASSERT_TRUE(eventually([this] {
        return loft->seen("Study").value("storageModeInForce", false) &&
               loft->seen("Loft").contains("limitInForce");
    }));
    EXPECT_EQ(loft->seen("Study")["limitInForce"], 80);
    EXPECT_EQ(loft->seen("Loft")["storageModeInForce"], false);
    EXPECT_EQ(loft->end(), 80);
}

TEST_F(FleetTest, TheFirstOneOfTheFleetIsToldOfWhenItIsLow)
{
    if (!Dunst::isInstalled()) GTEST_SKIP() << "dunst or Xvfb is not installed";
    switchOn("12");
    Dunst dunst(study->session());
    ASSERT_TRUE(eventually([&] { return dunst.displayed() >= 0; }));
    loft->look();
    ASSERT_TRUE(eventually([this] { return loft->seen("Loft").value("percentage", 0.0) == 12; }));
    study->look();
    ASSERT_TRUE(eventually([&] { return !dunst.shown().empty(); }));
    EXPECT_EQ(dunst.shown().front().title, "Remote Mac Battery Low");
    EXPECT_EQ(dunst.shown().front().body, "Your MacBook is at 12%. Consider plugging it in.");
    EXPECT_EQ(study->seen("Study")["percentage"], 94) << "what it says of itself is its own";
}

} // namespace
} // namespace velmora
