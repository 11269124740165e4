// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ManualLoop.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "history/HistoryCodec.h"
#include "state/HistoryStore.h"
#include "state/SettingsStore.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora {
namespace {

struct StoresTest : testing::Test {
    DaemonState load() { return SettingsStore(folder.path() / "settings.json", clock, log).load(); }
    bool save(const DaemonState& state)
    {
        return SettingsStore(folder.path() / "settings.json", clock, log).save(state);
    }
    std::size_t filesInFolder() const
    {
        const std::filesystem::directory_iterator files(folder.path());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    TemporaryFolder folder;
    std::shared_ptr<ManualLoop> loop = std::make_shared<ManualLoop>();
    ManualClock clock{loop};
    RecordingLog log;
};

TEST_F(StoresTest, WhatWasSavedComesBack)
{
    EXPECT_EQ(load(), DaemonState{}) << "no file, no complaint";
    EXPECT_EQ(log.count(), 0U);
    ASSERT_EQ(mkfifo((folder.path() / "settings.json").c_str(), 0600), 0);
    EXPECT_EQ(load(), DaemonState{}) << "what is no file blocks nobody";
    EXPECT_EQ(log.count("set aside"), 1U);

    DaemonState state;
    state.settings = {.isStorageModeEnabled = true, .customChargeLimit = 72.5, .customHysteresis = 0.1};
    state.users = {{1000, {.notifyOnCycle = true}}, {7, {.lowBatteryLimit = 5}}};
    state.quickCharge = QuickCharge::State::spent;
    state.hasAdoptedLimit = true;
    state.firstHeld = {{"BAT0", Thresholds{40, 85}}, {"BAT1", Thresholds{{}, 100}}, {"BAT2", std::nullopt}};
    state.heldLevel = "55-60";
    state.busId = "0123";
    state.callers = {{":1.7", state.settings}, {":1.9", {}}};
    ASSERT_TRUE(save(state));
    EXPECT_EQ(load(), state);
    EXPECT_EQ(filesInFolder(), 2U) << "that one and its own, no temporary file";
}

TEST_F(StoresTest, WhatCannotBeIsSetAsideAndTheGoodPartTaken)
{
    DaemonState good;
    good.settings.customChargeLimit = 66;
    good.users = {{1000, {.notifyOnLimit = false}}};
    const std::string bytes = encodeState(good);
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string changed = bytes;
        changed.replace(changed.find(from), from.size(), to);
        return changed;
    };
    const auto deep = [](std::size_t levels) { return std::string(levels, '[') + std::string(levels, ']'); };
    const auto many = [](int names) {
        std::string object = "{\"x\": 1";
        while (names-- > 0) object += ", \"" + std::to_string(names) + "\": 1";
        return object + '}';
    };
    const std::tuple<const char*, std::string, double> cases[] = {
        {"empty", "", 80},
        {"torn", bytes.substr(0, bytes.size() / 2), 80},
        {"another program's", "[1, 2, 3]", 80},
        {"of a later version", with("\"version\": 2", "\"version\": 3"), 80},
        {"not text", std::string("\xff\xfe\0\x01", 4), 80},
        {"deep", std::string(100'000, '['), 80},
        {"deep inside", with("\"firstHeld\": {}", "\"firstHeld\": " + deep(1'000'000)), 66},
        {"a limit too large for a double", with("66.0", "1e999"), 80},
        {"a flag of another type", with("\"isStorageModeEnabled\": false", "\"isStorageModeEnabled\": 1"),
         66},
        {"what no charger holds", with("\"firstHeld\": {}", "\"firstHeld\": {\"../x\": {\"end\": 1e9}}"), 66},
        {"nor that", with("\"firstHeld\": {}", "\"firstHeld\": [100]"), 66},
        {"very many names", with("\"firstHeld\": {}", "\"firstHeld\": " + many(200'000)), 66},
        {"an unknown state", with("\"quickCharge\": \"off\"", "\"quickCharge\": \"on\""), 66},
    };
    std::size_t aside = 0;
    for (const auto& [what, contents, limit] : cases) {
        SCOPED_TRACE(what);
        log.clear();
        folder.write("settings.json", contents);
        EXPECT_EQ(load().settings.customChargeLimit, limit);
        EXPECT_EQ(log.count("set aside as settings.json.broken-"), 1U);
        EXPECT_FALSE(std::filesystem::exists(folder.path() / "settings.json"));
        EXPECT_EQ(filesInFolder(), ++aside) << "none of the others is lost";
    }
}

TEST_F(StoresTest, AFileOfTheVersionBeforeLosesNothing)
{
    folder.write("settings.json", R"({"version": 1, "settings": {"isAppleRecommendedMode": false,
        "isTemporaryOverride": true, "isStorageModeEnabled": false, "customChargeLimit": 66,
        "customHysteresis": 4, "notifyOnLimit": false, "notifyOnHeat": true, "notifyOnCycle": true,
        "notifyOnPowerChange": true, "lowBatteryLimit": 15}, "quickCharge": "spent", "hasAdoptedLimit": true,
        "charging": "paused", "pausedAt": 61, "busId": "b", "callers": {":1.7": {"customChargeLimit": 66}}})");
    const auto state = load();
    EXPECT_EQ(
        state.settings,
        (ChargingSettings{.isAppleRecommendedMode = false, .customChargeLimit = 66, .customHysteresis = 4}));
    const ChargingSettings own{.notifyOnLimit = false, .notifyOnCycle = true, .lowBatteryLimit = 15};
    EXPECT_EQ(state.users, (UserSettings::Entries{{geteuid(), own}}));
    EXPECT_EQ(state.quickCharge, QuickCharge::State::spent);
    EXPECT_EQ(state.manual, (ManualCharging{ManualCharging::State::paused, 61}));
    EXPECT_EQ(state.callers.size(), 1U);
    EXPECT_EQ(log.count(), 0U);
}

TEST_F(StoresTest, KeepsTheSettingsOfSoManyUsersAndThenForgetsTheLongestUnused)
{
    UserSettings users;
    const ChargingSettings own{.notifyOnHeat = false};
    constexpr uid_t most = UserSettings::maximumUsers;
    for (uid_t user = 0; user < most; ++user) users.set(user, own);
    users.set(1, {});
    EXPECT_EQ(users.entries().size(), most - 1) << "who has the defaults takes no room";
    users.of(0);
    for (uid_t user = most; user < most + 2; ++user) users.set(user, own);
    EXPECT_EQ(users.of(0), own);
    EXPECT_EQ(users.of(2), ChargingSettings{});
    EXPECT_EQ(users.entries().size(), most);
}

TEST_F(StoresTest, AFailedWriteKeepsTheOldFileAndSaysSoOnce)
{
    DaemonState before;
    before.settings.customChargeLimit = 66;
    ASSERT_TRUE(save(before));
    std::filesystem::create_directory(folder.path() / "settings.json.new"); // in the temporary file's place
    SettingsStore store(folder.path() / "settings.json", clock, log);
    for (int attempt = 0; attempt < 2; ++attempt) EXPECT_FALSE(store.save({}));
    EXPECT_EQ(log.count("Cannot write"), 1U);
    EXPECT_EQ(load(), before);
}

TEST_F(StoresTest, TheHistoryIsCappedKeptAndNeverDeleted)
{
    const auto path = folder.path() / "history.json";
    std::vector<HSHistorySnapshot> many;
    for (int i = 0; i < 1200; ++i) many.push_back({Date{i * 1000.0}, 50, 90, "Nominal", false});
    folder.write("history.json", encodeHistory(many));

    HistoryStore store(path, clock, log);
    store.load();
    ASSERT_EQ(store.samples().size(), 1000U);
    EXPECT_EQ(store.samples().front(), many[200]) << "the newest are kept";
    const HSHistorySnapshot next{many.back().timestamp + 1000, 50, 90, "Fair", false};
    EXPECT_TRUE(store.record(next));
    EXPECT_EQ(store.samples().size(), 1000U);
    ASSERT_TRUE(store.save(store.encoded()));

    HistoryStore again(path, clock, log);
    again.load();
    EXPECT_EQ(again.samples(), store.samples());
    EXPECT_TRUE(again.record({many.front().timestamp, 50, 90, "Fair", false}))
        << "a wrong clock dated the last";

    folder.write("history.json", "[{\"t\": 1}]");
    HistoryStore broken(path, clock, log);
    broken.load();
    EXPECT_TRUE(broken.samples().empty());
    EXPECT_EQ(log.count("set aside"), 1U);
}

} // namespace
} // namespace velmora
