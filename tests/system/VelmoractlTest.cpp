// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ControlTest.h"
#include "SystemTest.h"
#include "bus/Records.h"
#include "wire/ChargerInterface.h"

#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

namespace velmora {
namespace {

using nlohmann::json;

/// velmoractl as a shell runs it, beside a daemon or what poses as one.
struct VelmoractlTest : CommandTest<SystemTest> {
    VelmoractlTest() { layLaptop(); }

    /// Answers for systemd, which knows two units, and for UPower, which holds the battery at thresholds.
    std::array<dbus::Slot, 2> otherPrograms() const
    {
        const auto units = [](sd_bus_message* call, void*, sd_bus_error*) {
            return sd_bus_reply_method_return(call, "a(ssssssouso)", 2, "tlp.service", "", "", "active", "",
                                              "", "/", 0, "", "/", "asusd.service", "", "", "inactive", "",
                                              "", "/", 0, "", "/");
        };
        const auto yes = [](sd_bus_message* call, void*, sd_bus_error*) {
            return sd_bus_reply_method_return(call, "v", "b", 1);
        };
        std::array<dbus::Slot, 2> slots;
        constexpr auto device = "/org/freedesktop/UPower/devices/battery_BAT0";
        sd_bus_add_object(peer.bus(), out(slots[0]), "/org/freedesktop/systemd1", units, nullptr);
        sd_bus_add_object(peer.bus(), out(slots[1]), device, yes, nullptr);
        for (const auto* name : {"org.freedesktop.systemd1", "org.freedesktop.UPower"})
            dbus::check(sd_bus_request_name(peer.bus(), name, 0), name);
        return slots;
    }

    json parsed(const std::string& words)
    {
        const auto outcome = control(words + " --json");
        EXPECT_EQ(outcome.status, 0) << words << outcome.said;
        return json::parse(outcome.said, nullptr, false);
    }
};

TEST_F(VelmoractlTest, UnderstandsACommandLineOrSaysWhatIsWrong)
{
    const std::tuple<const char*, int, const char*> cases[] = {
        {"--help", 0, "usage: velmoractl"},
        {"help limit", 2, "one word too many"},
        {"--version", 0, "velmoractl "},
        {"charge", 2, "There is no command \"charge\""},
        {"charge --json", 2, "\"exitStatus\":2"},
        {"'\x1b[2Jx'", 2, "There is no command"},
        {"--all", 2, "There is no option \"--all\""},
        {"full --csv", 2, "\"full\" has no option"},
        {"limit", 2, "needs a level"},
        {"limit 19", 2, "from 20 to 100"},
        {"limit 80.5", 2, "whole number"},
        {"limit 80 --resume-below", 2, "needs a value"},
        {"limit 80 --resume-below 59", 2, "60% to 80%"},
        {"storage maybe", 2, "\"on\" or \"off\""},
        {"status --timeout 0", 2, "from 1 to 600"},
        {"status", 3, "is not running"},
        {"limit 80%", 3, "is not running"},
        {"history --json", 3, "\"exitStatus\":3"},
        {"diagnose", 0, "is not running"},
    };
    for (const auto& [words, status, said] : cases) expectOutcome(words, status, said);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere", 1);
    expectOutcome("status", 3, "system bus cannot be reached");
}

TEST_F(VelmoractlTest, SetsTheChargerAndSaysWhatIsInForce)
{
    startDaemon();
    ASSERT_TRUE(becomes(78, 80));
    const std::tuple<const char*, const char*, int, int> cases[] = {
        {"limit 70 --resume-below 60", "In force: the charger stops at 70%.", 60, 70},
        {"storage on", "50%", 40, 50},
        {"limit 90%", "comes into force after that", 40, 50},
        {"storage off", "the limit of 90%", 80, 90},
        {"full", "quick charge is on", 99, 100},
        {"full --cancel", "the limit of 90%", 80, 90},
        {"auto-protect off", "no limit is set", 95, 100},
        {"pause", "Paused at 94%", 0, 94},
        {"resume", "no limit is set", 95, 100},
        {"limit 80 --resume-below 80", "begins again below", 79, 80},
    };
    for (const auto& [words, said, wantedStart, wantedEnd] : cases) {
        expectOutcome(words, 0, said);
        EXPECT_TRUE(becomes(wantedStart, wantedEnd)) << words << ": " << start() << " " << end();
    }
    const auto threshold = tree() / "class/power_supply/BAT0/charge_control_end_threshold";
    std::filesystem::copy_file(threshold, tree() / "end");
    std::filesystem::create_symlink(tree() / "end", tree() / "link"); // readable, and never written to
    std::filesystem::rename(tree() / "link", threshold);
    expectOutcome("limit 70", 1, "The charger refused the change");
    expectOutcome("status", 0, "Not in force: the charger refused 70%, and stops at 80%.");
    expectOutcome("limit 80 --resume-below 79", 0, "In force: the charger stops at 80%.");
    std::filesystem::rename(tree() / "end", threshold);
    if (geteuid() != 0) return; // only root can be somebody else
    const auto refused = await(begin("limit 90", "setpriv --reuid=65534 --regid=65534 --clear-groups "));
    EXPECT_EQ(refused.status, 1) << refused.said;
    EXPECT_NE(refused.said.find("run it again with sudo"), refused.said.npos) << refused.said;
    EXPECT_NE(refused.said.find("usermod -aG velmora nobody"), refused.said.npos) << refused.said;
    EXPECT_EQ(end(), 80);
}

TEST_F(VelmoractlTest, TellsOfChargerAndBatteriesToPeopleAndScripts)
{
    startDaemon();
    ASSERT_TRUE(becomes(78, 80));
    const auto others = otherPrograms();
    expectOutcome("", 0, "above the limit of 80%");
    expectOutcome("status", 0, "TLP runs here");
    expectOutcome("status", 0, "65.4 Wh now, 69.2 Wh when full, 80.4 Wh by design");
    expectOutcome("status", 0, "health 86.1%, 326 cycles, Celxpert 5B10V98091");
    const auto status = parsed("status");
    EXPECT_EQ(status["batteries"][0]["Model"], "5B10V98091");
    EXPECT_FALSE(status["batteries"][0].contains("Temperature")) << "not told by this laptop";
    EXPECT_EQ(status["charger"]["EndThreshold"], 80);
    EXPECT_EQ(status["otherPrograms"], json::array({"TLP", "UPower"})) << "and not asusd";
    EXPECT_EQ(status["settings"].size(), 5U) << "the machine's own";
    expectOutcome("history --csv", 0, "Z,94.");
    EXPECT_EQ(parsed("history")[0]["isCharging"], false);

    std::filesystem::remove_all(tree() / "class/power_supply/BAT0");
    ASSERT_TRUE(eventually([&] { return control("status").status == 4; })) << "no battery any more";
    expectOutcome("limit 70", 4, "This machine has no battery.");
}

TEST_F(VelmoractlTest, WatchesChargerAndDaemonComeAndGo)
{
    folder.write(tree() / "class/power_supply/BAT0/charge_control_start_threshold", "78\n");
    folder.write(tree() / "class/power_supply/BAT0/charge_control_end_threshold", "80\n");
    folder.write("lines", "");
    const auto out = (folder.path() / "lines").string();
    const auto seen = [&](const char* kind) { return folder.read("lines").find(kind) != std::string::npos; };
    int step = 0;
    const auto moveOn = [&] {
        if (step == 0 && seen("\"no-daemon\"")) {
            ++step;
            startDaemon();
        } else if (step == 1 && seen("\"held\"")) {
            ++step;
            peer.set({.isAppleRecommendedMode = false});
        } else if (step == 2 && seen("\"plugged\"")) {
            ++step;
            stopDaemon();
        }
    };
    auto ended = begin("watch --json >" + out + " & p=$!; until [ $(grep -c no-daemon " + out +
                       ") -ge 2 ]; do sleep 0.02; done; kill $p; cat " + out);
    eventually([&] { return moveOn(), step == 3; });
    const auto outcome = await(std::move(ended));
    std::istringstream lines(outcome.said);
    for (std::string line; std::getline(lines, line);) {
        const auto parsed = json::parse(line, nullptr, false);
        ASSERT_TRUE(parsed.is_object()) << line;
        EXPECT_EQ(parsed["class"] == "no-daemon", !parsed.contains("percentage")) << line;
        EXPECT_NE(parsed["tooltip"], "") << line;
    }
    EXPECT_EQ(step, 3) << outcome.said;
}

TEST_F(VelmoractlTest, OutlivesADaemonThatHangsRefusesOrTalksNonsense)
{
    KeyedArchive nonsense;
    for (const auto& property : chargerProperties) nonsense.encode(property.name, "\x1b[31m\xc2\x9b");
    KeyedArchive extremes = ChargerReport{
        .hasBattery = true,
        .control = "thresholds",
        .driver = "\x1b]0;owned\x07",
        .startThreshold = INT64_MIN,
        .endThreshold = INT64_MAX,
        .lastAction = "\x1b[2J",
        .lastActionDate =
            Date{1e300}}.archived();
    extremes.encode("percentage", std::nan(""));
    extremes.encode("timeToFull", INT64_MAX);
    const KeyedArchive* record = nullptr; ///< null: no answer
    bool isText = false;
    peer.serve([&](sd_bus_message* call) {
        if (sd_bus_message_is_method_call(call, nullptr, "SetSettings") > 0)
            return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "not for \x1b[1myou");
        if (isText) return sd_bus_reply_method_return(call, "s", "\x1b[31m");
        if (!record) return 1;
        const auto reply = dbus::replyTo(call);
        dbus::append(reply.get(), *record);
        return dbus::send(reply);
    });
    const std::tuple<const char*, const KeyedArchive*, bool, int, const char*> cases[] = {
        {"--timeout 1 status", nullptr, false, 3, "does not answer"},
        {"status", nullptr, true, 1, "cannot be understood"},
        {"status", &nonsense, false, 4, "no battery"},
        {"status", &extremes, false, 0, "0%"},
        {"status --json", &extremes, false, 0, "\"percentage\":0"},
        {"history", &extremes, false, 1, "cannot be understood"},
        {"limit 80", &extremes, false, 1, "run it again with sudo"},
        {"diagnose", &extremes, false, 0, "Control = thresholds"},
        {"diagnose --json", nullptr, true, 0, "cannot be understood"},
    };
    for (const auto& [words, answer, text, status, said] : cases) {
        record = answer;
        isText = text;
        expectOutcome(words, status, said);
    }
}

TEST_F(VelmoractlTest, WaitsForAPersonAsLongAsTheDaemonIsThere)
{
    std::shared_ptr<sd_bus_message> wish;
    peer.serve([&](sd_bus_message* call) {
        const bool isWish = sd_bus_message_is_method_call(call, nullptr, "SetSettings") > 0;
        if (isWish) wish = dbus::keep(call);
        if (isWish) return 1;
        if (wish) { // it asks whether anybody is there: the person has typed
            const auto answer = dbus::replyTo(wish.get());
            dbus::append(answer.get(), archived(ChargingSettings{}));
            dbus::send(answer);
        }
        const auto reply = dbus::replyTo(call);
        dbus::append(reply.get(), ChargerReport{.hasBattery = true, .control = "thresholds"}.archived());
        return dbus::send(reply);
    });
    expectOutcome("limit 80", 0, "Still waiting");
}

TEST_F(VelmoractlTest, DiagnosesWithoutTellingWhoseLaptopItIs)
{
    const std::pair<const char*, const char*> told[] = {
        {"class/dmi/id/product_name", "20MF000BUS"},
        {"class/power_supply/BAT0/technology", "Li-poly"},
        {"class/thermal/thermal_zone0/type", "x86_pkg_temp"},
    };
    const std::pair<const char*, const char*> secret[] = {
        {"class/dmi/id/product_serial", "PF1SECRET"},
        {"class/dmi/id/product_uuid", "1234-SECRET"},
        {"class/power_supply/BAT0/serial_number", "99SECRET"},
        {"class/power_supply/hid-00:1f:SECRET-battery/type", "Battery"},
        {"class/power_supply/hid-00:1f:SECRET-battery/scope", "Device"},
    };
    for (const auto& [path, text] : told) folder.write(tree() / path, std::string(text) + '\n');
    for (const auto& [path, text] : secret) folder.write(tree() / path, std::string(text) + '\n');
    startDaemon();
    ASSERT_TRUE(becomes(78, 80));
    setenv("VELMORA_SYSFS", tree().c_str(), 1);
    const auto outcome = control("diagnose");
    unsetenv("VELMORA_SYSFS");
    for (const auto& [path, text] : told) EXPECT_NE(outcome.said.find(text), outcome.said.npos) << path;
    for (const auto* word : {"EndThreshold = ", "[daemon: actions]\n1 = 20"})
        EXPECT_NE(outcome.said.find(word), outcome.said.npos) << outcome.said;
    EXPECT_EQ(outcome.said.find("SECRET"), outcome.said.npos) << outcome.said;

    const PrivateBus closed("<deny send_destination=\"app.velmora.daemon\"/>");
    const auto unreachable = dbus::openSystemBus(loop);
    dbus::check(sd_bus_request_name(unreachable.get(), wire::serviceName, 0), "name");
    const auto refused = control("diagnose").said;
    EXPECT_NE(refused.find("does not let this user"), refused.npos) << refused;
    EXPECT_EQ(refused.find("uid="), refused.npos) << refused;
}

} // namespace
} // namespace velmora
