// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "records/StoreWorker.h"

#include "StoreRequests.h"
#include "records/RecordCodec.h"

#include <atomic>
#include <condition_variable>
#include <gmock/gmock.h>
#include <limits>
#include <mutex>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using Fields = CloudRecord::Fields;

/// What a backend of a test was told; outlives it.
struct Backing {
    std::mutex mutex;
    std::condition_variable changed;
    bool isStuck = false;
    bool isCancelled = false;
    int asked = 0;
    int rests = 0;

    template <typename Change>
    void change(Change change)
    {
        const std::lock_guard lock(mutex);
        change();
        changed.notify_all();
    }
    template <typename Condition>
    bool await(Condition condition)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, 20s, condition);
    }
};

/// Answers at once, or while it is stuck not before it is cancelled.
struct StuckBackend final : RecordBackend {
    explicit StuckBackend(std::shared_ptr<Backing> backing) : backing_(std::move(backing)) {}

    CloudResult<StoredRecord> fetch(const std::string& name) override
    {
        if (name == "bad") throw std::runtime_error("the library is out of its mind");
        ask();
        return StoredRecord{.type = "T", .name = name, .fields = "{}"};
    }
    std::optional<CloudError> save(const StoredRecord&) override
    {
        ask();
        return std::nullopt;
    }
    CloudResult<std::vector<StoredRecord>> query(const std::string&, std::size_t) override { return {}; }
    std::optional<CloudError> remove(const std::string&) override { return std::nullopt; }
    std::optional<CloudError> check() override { return std::nullopt; }
    void rest() noexcept override
    {
        backing_->change([this] { ++backing_->rests; });
    }
    void cancel() noexcept override
    {
        backing_->change([this] { backing_->isCancelled = true; });
    }

private:
    void ask()
    {
        backing_->change([this] { ++backing_->asked; });
        backing_->await([this] { return !backing_->isStuck || backing_->isCancelled; });
    }
    std::shared_ptr<Backing> backing_;
};

struct StoreWorkerTest : testing::Test {
    std::shared_ptr<Backing> backing = std::make_shared<Backing>();
    std::shared_ptr<const void> presence = std::make_shared<char>();
    std::shared_ptr<StoreWorker> make(StoreWorker::Bounds bounds = {})
    {
        return std::make_shared<StoreWorker>(std::make_unique<StuckBackend>(backing), presence, bounds);
    }
    bool isThreadGone() const
    {
        for (int i = 0; i < 4'000 && presence.use_count() > 1; ++i) std::this_thread::sleep_for(5ms);
        return presence.use_count() == 1;
    }
};

TEST_F(StoreWorkerTest, EndsAtOnceWhileItsBackendIsStuckAndAnswersNothingThen)
{
    backing->isStuck = true;
    std::atomic<int> answers = 0;
    auto store = make();
    store->fetch("a", [&](const auto&) { ++answers; });
    store->save(CloudRecord("T", "b"), [&](const auto&) { ++answers; });
    ASSERT_TRUE(backing->await([&] { return backing->asked == 1; }));
    store.reset();
    EXPECT_TRUE(isThreadGone());
    EXPECT_EQ(answers, 0);
    EXPECT_EQ(backing->asked, 1) << "what waited was not begun any more";
}

TEST_F(StoreWorkerTest, MayEndByItsOwnAnswer)
{
    auto store = make();
    std::promise<void> ended;
    store->fetch("a", [&](const auto&) {
        store.reset();
        ended.set_value();
    });
    EXPECT_EQ(ended.get_future().wait_for(20s), std::future_status::ready);
    EXPECT_TRUE(isThreadGone());
}

TEST_F(StoreWorkerTest, WhatWaitsTooLongOrIsTooMuchFailsAndWhatThrowsIsAnAnswer)
{
    const auto store = make({.idle = 20ms, .patience = 50ms, .requests = 1});
    EXPECT_EQ(std::get<CloudError>(fetch(*store, "bad")).text, "the library is out of its mind");
    EXPECT_TRUE(backing->await([&] { return backing->rests == 1; }));

    backing->isStuck = true;
    std::vector<std::string> answers;
    const auto note = [&](const auto& error) { backing->change([&] { answers.push_back(problem(error)); }); };
    store->save(CloudRecord("T", "first"), note);
    ASSERT_TRUE(backing->await([&] { return backing->asked == 1; }));
    store->save(CloudRecord("T", "waits"), note);
    store->save(CloudRecord("T", "is too much"), note);
    EXPECT_TRUE(backing->await([&] { return answers.size() == 3; })) << "while the backend is stuck";
    backing->change([&] { backing->isStuck = false; });
    EXPECT_EQ(problem(save(*store, "later", {})), "");
    const std::string slow = "slow: the store is busy with earlier requests";
    EXPECT_THAT(answers, testing::UnorderedElementsAre(
                             slow, slow, "unreachable: the store does not come to an end with the request"));
    EXPECT_EQ(backing->asked, 2) << "neither of the others was tried";
}

TEST(RecordCodec, ReadsBackWhatItWritesAndLeavesOutWhatNoStoreTakes)
{
    const double inf = std::numeric_limits<double>::infinity();
    const Fields kept{{"b", true}, {"d", 0.1}, {"s", "\"\\\n\u20ac"}, {"t", Date{800'000'000.25}}, {"z", ""}};
    Fields given = kept;
    given.insert({{"inf", inf}, {"never", Date{inf}}});
    EXPECT_EQ(record_codec::decode(record_codec::encode(given).value()), kept);
    EXPECT_EQ(record_codec::encode({}), "{}");
    EXPECT_EQ(record_codec::encode({{"s", std::string(record_codec::maximumBytes, 'x')}}), std::nullopt);
}

TEST(RecordCodec, HostileTextsAreNoRecordOrLackWhatIsNoField)
{
    const std::string deep = std::string(100, '[') + std::string(100, ']');
    std::string many = "{";
    for (int i = 0; i < 300; ++i) many += "\"" + std::to_string(i) + "\":1,";
    for (const auto& text : std::initializer_list<std::string>{
             "", "1", "null", "\"a\"", "[]", "[{}]", "{", "{}{}", "{\"a\":NaN}", "{\"a\":1e999}",
             "{\"a\":\"\xff\"}", R"({"a":)" + deep + "}", many + R"("a":1})",
             "{" + std::string(70'000, ' ') + "}"})
        EXPECT_EQ(record_codec::decode(text), std::nullopt) << text.substr(0, 80);
    const std::pair<const char*, Fields> read[] = {
        {R"({"a":null,"b":[1,"x",{"date":1}],"c":{"x":1},"d":{},"e":2})", {{"e", 2.0}}},
        {R"({"a":{"date":"x"},"b":{"date":[1]},"c":{"x":{"date":1}},"d":{"date":1e300}})", {}},
        {R"({"a":{"x":[],"date":978307201}})", {{"a", Date{1}}}},
        {R"({"a":1,"a":true,"b":18446744073709551615,"c":"x\u0000y"})",
         {{"a", true}, {"b", 18446744073709551615.0}, {"c", "xy"}}},
    };
    for (const auto& [text, fields] : read) EXPECT_EQ(record_codec::decode(text), fields) << text;
}

} // namespace
} // namespace velmora
