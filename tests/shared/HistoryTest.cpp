// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakePlatform.h"
#include "history/AnalyticsStore.h"
#include "history/HistoryCodec.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace velmora {

namespace {

using namespace std::chrono_literals;
using History = AnalyticsStore::History;

HSHistorySnapshot sampleAt(double seconds, double percentage = 80, bool isCharging = false)
{
    return {Date{seconds}, percentage, 94, "Nominal", isCharging};
}

TEST(HistoryCodec, WritesCompactlyAndReadsElsewhere)
{
    EXPECT_EQ(encodeHistory({}), "[]");
    EXPECT_EQ(encodeHistory({sampleAt(757382400, 80, true), sampleAt(0.5)}),
              R"([{"t":757382400,"p":80,"h":94,"s":"Nominal","c":true},)"
              R"({"t":0.5,"p":80,"h":94,"s":"Nominal","c":false}])");
    EXPECT_EQ(decodeHistory(R"( [ {"c":false, "note":{"t":[1,[2]]}, "s":"N\u006fminal", "h":94.0,
                                   "p":8e1, "t":0, "x":null} ] )"),
              History{sampleAt(0)});
    EXPECT_EQ(decodeHistory(R"([{"t":[9],"t":0,"p":1,"h":94,"p":80,"s":"Nominal","c":false,"s":"Nominal"}])"),
              History{sampleAt(0)}); // of a key that comes twice the last counts
}

TEST(HistoryCodec, EveryDoubleComesBackToTheBit)
{
    constexpr double tiny = std::numeric_limits<double>::denorm_min();
    constexpr double most = std::numeric_limits<double>::max();
    History samples;
    for (const double date :
         {757382400.123456, 0.1, -978307200.0, 9007199254740993.0, 1e22, tiny, most, -most}) {
        for (const double next : {date, std::nextafter(date, 0.0)}) samples.push_back(sampleAt(next, next));
    }
    EXPECT_EQ(decodeHistory(encodeHistory(samples)), samples);
}

TEST(HistoryCodec, LeavesOutWhatJsonCannotHold)
{
    const double infinite = std::numeric_limits<double>::infinity();
    auto sick = sampleAt(0);
    sick.health = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(decodeHistory(encodeHistory({sampleAt(infinite), sampleAt(1), sampleAt(0, -infinite), sick})),
              History{sampleAt(1)});
    auto foreign = sampleAt(0);
    foreign.thermalState = "\xff\"\n";
    foreign.thermalState += '\0';
    const auto back = decodeHistory(encodeHistory({foreign}));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->at(0).thermalState, std::string("\xef\xbf\xbd\"\n\0", 6));
}

TEST(HistoryCodec, TakesAllOrNothing)
{
    const std::string good = R"({"t":1,"p":80,"h":94,"s":"Nominal","c":true})";
    ASSERT_TRUE(decodeHistory("[" + good + "]"));
    const std::string broken[] = {
        "",
        "[" + good,
        "[" + good + "]]",
        "[" + good + ",]",
        "[" + good + ",[" + good + "]]",
        "[" + good + R"(,{"t":1,"p":80,"h":94,"s":"Nominal"}])",
        R"([{"t":"1","p":80,"h":94,"s":"Nominal","c":true}])",
        R"([{"t":1,"p":80,"h":94,"s":"Nominal","c":true,"t":[2]}])",
        R"([{"t":1,"p":80,"h":94,"s":"Nominal","c":true,"x":{"t":1}},{"p":80,"h":94,"s":"Nominal","c":true}])",
        R"([{"t":1e999,"p":80,"h":94,"s":"Nominal","c":true}])",
        "[{\"t\":1,\"p\":80,\"h\":94,\"s\":\"\xff\",\"c\":true}]",
        std::string(1'000'000, '['),
        R"([{"x":)" + std::string(1'000'000, '['),
    };
    for (const auto& bytes : broken) EXPECT_FALSE(decodeHistory(bytes)) << bytes.substr(0, 80);
}

TEST(HistoryFilter, DropsWhatTellsNothingNew)
{
    const auto last = sampleAt(10'000, 80);
    const std::tuple<const char*, HSHistorySnapshot, bool> cases[] = {
        {"exactly five points up", sampleAt(10'600, 85), true},
        {"exactly five points down", sampleAt(10'600, 75), true},
        {"just below five points", sampleAt(10'600, 84.999), false},
        {"the charger came", sampleAt(10'600, 82, true), true},
        {"just below fifteen minutes", sampleAt(10'899.999, 80), false},
        {"fifteen minutes", sampleAt(10'900, 80), true},
        {"the clock was set back", sampleAt(1'000, 80), false},
        {"no level", sampleAt(20'000, std::numeric_limits<double>::quiet_NaN()), false},
    };
    for (const auto& [what, candidate, isKept] : cases) {
        EXPECT_EQ(isWorthKeeping(&last, candidate), isKept) << what;
    }
    EXPECT_TRUE(isWorthKeeping(nullptr, last));
}

struct AnalyticsStoreTest : testing::Test {
    FakePlatform platform;
    ManualQueue& queue = *platform.queue("app.velmora.analytics");
    static constexpr auto file = "support/Velmora/history.json";

    std::optional<History> onDisk() const { return decodeHistory(platform.folder.read(file)); }
};

TEST_F(AnalyticsStoreTest, TheNewestSampleReachesTheFileWithTheNextOne)
{
    auto& store = AnalyticsStore::shared();
    store.record(80, "Fair", true, 94);
    EXPECT_TRUE(store.getHistory().empty()) << "the work is the queue's";
    platform.settle();
    const HSHistorySnapshot first(ManualClock::start, 80, 94, "Fair", true);
    EXPECT_EQ(store.getHistory(), History{first});
    EXPECT_EQ(onDisk(), History{});

    platform.loop->advance(10min);
    store.record(82, "Fair", true, 94); // tells nothing new
    platform.settle();
    EXPECT_EQ(store.getHistory().size(), 1U);
    platform.loop->advance(5min);
    store.record(82, "Fair", true, 94);
    platform.settle();
    EXPECT_EQ(store.getHistory().size(), 2U);
    EXPECT_EQ(onDisk(), History{first});
}

TEST_F(AnalyticsStoreTest, AnUnreadableFileIsAnEmptyHistoryAndIsOverwritten)
{
    for (const std::uintmax_t size : {3U, 100'000'000U}) { // torn, and absurdly long
        SCOPED_TRACE(size);
        platform.folder.write(file, "[]");
        std::filesystem::resize_file(platform.folder.path() / file, size);
        AnalyticsStore store;
        platform.settle();
        EXPECT_TRUE(store.getHistory().empty());
        store.record(80, "Fair", true, 94);
        platform.settle();
        EXPECT_EQ(onDisk(), History{});
    }
}

TEST_F(AnalyticsStoreTest, OneGoesForEachThatComesPastAThousand)
{
    const std::pair<std::size_t, std::size_t> cases[] = {{998, 999}, {999, 1000}, {1000, 1000}, {1200, 1200}};
    for (const auto& [loaded, afterwards] : cases) {
        SCOPED_TRACE(loaded);
        History samples;
        for (std::size_t i = 0; i < loaded; ++i) samples.push_back(sampleAt(static_cast<double>(i)));
        platform.folder.write("own.json", encodeHistory(samples));
        AnalyticsStore store(platform.folder.path() / "own.json");
        platform.settle();
        EXPECT_EQ(store.getHistory(), samples);
        store.record(80, "Fair", true, 94);
        platform.settle();
        EXPECT_EQ(store.history.get().size(), afterwards);
        EXPECT_EQ(store.history.get().front(), samples[loaded + 1 - afterwards]);
    }
}

} // namespace

} // namespace velmora
