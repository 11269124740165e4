// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ManualClock.h"
#include "ManualLoop.h"
#include "RecordingLog.h"
#include "TemporaryFolder.h"
#include "history/HistoryCodec.h"
#include "state/HistoryStore.h"
#include "state/SettingsStore.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace velmora {
namespace {

class StoresTest : public testing::Test {
protected:
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
    state.settings = {.isTemporaryOverride = true, .customChargeLimit = 72.5, .customHysteresis = 0.1};
    state.settings.notifyOnCycle = true;
    state.quickCharge = QuickCharge::State::spent;
    state.hasAdoptedLimit = true;
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
    const std::string bytes = encodeState(good);
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string changed = bytes;
        changed.replace(changed.find(from), from.size(), to);
        return changed;
    };
    const struct {
        const char* what;
        std::string contents;
        double limit;
    } cases[] = {
        {"empty", "", 80},
        {"torn", bytes.substr(0, bytes.size() / 2), 80},
        {"another program's", "[1, 2, 3]", 80},
        {"of a later version", with("\"version\": 1", "\"version\": 2"), 80},
        {"not text", std::string("\xff\xfe\0\x01", 4), 80},
        {"deep", std::string(100'000, '['), 80},
        {"a limit too large for a double", with("66.0", "1e999"), 80},
        {"a flag of another type", with("\"notifyOnHeat\": true", "\"notifyOnHeat\": 1"), 66},
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

TEST_F(StoresTest, AFailedWriteKeepsTheOldFileAndSaysSoOnce)
{
    ASSERT_TRUE(save({}));
    std::filesystem::create_directory(folder.path() / "settings.json.new"); // in the temporary file's place
    SettingsStore store(folder.path() / "settings.json", clock, log);
    DaemonState changed;
    changed.settings.customChargeLimit = 50;
    EXPECT_FALSE(store.save(changed));
    EXPECT_FALSE(store.save(changed));
    EXPECT_EQ(log.count("Cannot write"), 1U);
    EXPECT_EQ(load(), DaemonState{});
}

TEST_F(StoresTest, RefusesSettingsThatCannotBe)
{
    for (const double limit : {19.9, 100.1, std::nan(""), HUGE_VAL})
        EXPECT_TRUE(problemWith({.customChargeLimit = limit})) << limit;
    for (const double hysteresis : {-0.1, 20.1, std::nan(""), -HUGE_VAL})
        EXPECT_TRUE(problemWith({.customHysteresis = hysteresis})) << hysteresis;
    EXPECT_TRUE(problemWith({.lowBatteryLimit = std::nan("")}));
    EXPECT_FALSE(problemWith({.customChargeLimit = 20, .customHysteresis = 20, .lowBatteryLimit = 400}));
    EXPECT_EQ(clamped({.lowBatteryLimit = -3}).lowBatteryLimit, 0);
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
