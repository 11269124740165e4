// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/SecretService.h"

#include "DeafBus.h"
#include "Keyring.h"
#include "LoopTest.h"
#include "ManualLoop.h"
#include "PrivateBus.h"
#include "desktop/SecretSession.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>

namespace velmora {
namespace {

using enum SecretStatus;
using namespace std::chrono_literals;

/// The adapter on a session bus of its own, whose timers run on virtual time.
struct SecretServiceTest : LoopTest {
    SecretServiceTest()
    {
        setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
        session = dbus::openSessionBus(loop);
        store.emplace(time, session.get());
    }
    ~SecretServiceTest() override { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    void serve() override
    {
        LoopTest::serve();
        time.runPosted();
    }

    bool save(const std::string& value)
    {
        const SecretItem item{.service = "app.velmora.test", .account = "me", .data = value};
        store->remove(item);
        return store->add(item) == success;
    }
    std::optional<std::string> read()
    {
        SecretItem item{.service = "app.velmora.test", .account = "me"};
        store->copyMatching(item);
        return item.data;
    }
    SecretStatus remove() { return store->remove({.service = "app.velmora.test", .account = "me"}); }

    void expectUnavailable()
    {
        EXPECT_FALSE(save("new"));
        SecretItem item{.service = "app.velmora.test", .account = "me"};
        EXPECT_EQ(store->copyMatching(item), unavailable);
        EXPECT_EQ(remove(), unavailable);
    }
    void waitUntilReady()
    {
        bool isReady = false;
        store->whenReady([&] { isReady = true; });
        ASSERT_TRUE(eventually([&] { return isReady; }));
    }

    PrivateBus bus;
    ManualLoop time;
    dbus::Bus session;
    std::optional<SecretService> store;
};

struct KeyringTest : SecretServiceTest {
    void SetUp() override
    {
        if (!Keyring::isInstalled()) GTEST_SKIP() << "gnome-keyring-daemon or secret-tool is not installed";
        keyring.emplace(bus.address());
        waitUntilReady();
    }
    std::string lookUp() const { return keyring->lookUp("app.velmora.test", "me"); }

    std::optional<Keyring> keyring;
};

TEST_F(KeyringTest, WhatIsSavedIsReadHereAndByOthers)
{
    EXPECT_FALSE(read());
    EXPECT_EQ(remove(), notFound);
    EXPECT_TRUE(save("first"));
    EXPECT_EQ(lookUp(), "first");
    EXPECT_TRUE(save("zweiter \u20ac"));
    EXPECT_EQ(lookUp(), "zweiter \u20ac");
    EXPECT_EQ(read(), "zweiter \u20ac");
    EXPECT_TRUE(save(""));
    EXPECT_EQ(read(), "");
    EXPECT_EQ(remove(), success);
    EXPECT_FALSE(read());

    keyring->put("app.velmora.test", "me", "theirs");
    EXPECT_EQ(read(), "theirs");
    EXPECT_TRUE(save("ours"));
    EXPECT_EQ(lookUp(), "ours");
    EXPECT_EQ(remove(), success);
    EXPECT_EQ(lookUp(), "") << "replaced, not doubled";
}

TEST_F(KeyringTest, OneThatIsLockedHangsOrDiesIsUnavailableAndLosesNothing)
{
    ASSERT_TRUE(save("kept"));
    keyring->signal(SIGSTOP);
    expectUnavailable();
    EXPECT_FALSE(std::async(std::launch::async, [&] { return read(); }).get());
    keyring->signal(SIGCONT);
    ASSERT_TRUE(eventually([&] { return save("kept"); })); // it first does what it was asked meanwhile
    keyring->lock();
    expectUnavailable();
    keyring->stop();
    expectUnavailable();
    keyring->start();
    ASSERT_TRUE(eventually([&] { return read().has_value(); }));
    EXPECT_EQ(read(), "kept");
    store->cancel();
    expectUnavailable();
}

TEST_F(SecretServiceTest, WaitsTenSecondsAtMostForOneThatIsBeingStarted)
{
    int ready = 0;
    store->whenReady([&] { ++ready; });
    for (int turn = 0; turn < 20; ++turn) serve();
    time.advance(SecretService::patienceAtStart - 1ms);
    EXPECT_EQ(ready, 0);
    time.advance(1ms);
    store->whenReady([&] { ++ready; });
    EXPECT_EQ(ready, 1);
    time.runPosted();
    EXPECT_EQ(ready, 2);
    EXPECT_EQ(time.pendingTimers(), 0U);
    expectUnavailable();

    store.emplace(time, nullptr);
    store->whenReady([&] { ++ready; });
    time.advance(0ms);
    EXPECT_EQ(ready, 3) << "there is no bus to wait on";
}

TEST_F(SecretServiceTest, ABusThatNeverAnswersHoldsNobodyUp)
{
    const DeafBus deaf;
    deaf.listen();
    setenv("DBUS_SESSION_BUS_ADDRESS", deaf.address().c_str(), 1);
    expectUnavailable();
}

/// A service of the test's own, which says what it likes.
struct LyingServiceTest : SecretServiceTest {
    LyingServiceTest()
    {
        dbus::check(sd_bus_add_filter(liar.get(), nullptr, called, this), "filter");
        dbus::check(sd_bus_request_name(liar.get(), SecretSession::serviceName, 0), "name");
    }

    static int called(sd_bus_message* call, void* self, sd_bus_error*)
    {
        auto& test = *static_cast<LyingServiceTest*>(self);
        return sd_bus_message_is_method_call(call, nullptr, nullptr) > 0 ? test.answer(call) : 0;
    }

    /// Speaks to it from a thread, while it is served here.
    template <typename Deed>
    auto whileServed(Deed deed)
    {
        auto result = std::async(std::launch::async, deed);
        EXPECT_TRUE(eventually([&] { return result.wait_for(0s) == std::future_status::ready; }));
        return result.get();
    }

    dbus::Bus liar = dbus::openSessionBus(loop);
    std::function<int(sd_bus_message* call)> answer;
};

bool isCall(sd_bus_message* call, std::string_view member)
{
    return member == sd_bus_message_get_member(call);
}

int answerWell(sd_bus_message* call, std::size_t secretSize, const char* prompt)
{
    if (isCall(call, "OpenSession")) return sd_bus_reply_method_return(call, "vo", "s", "", "/s");
    if (isCall(call, "SearchItems")) return sd_bus_reply_method_return(call, "aoao", 1, "/item", 0);
    if (isCall(call, "CreateItem")) return sd_bus_reply_method_return(call, "oo", "/", prompt);
    if (isCall(call, "Delete")) return sd_bus_reply_method_return(call, "o", prompt);
    const auto reply = dbus::replyTo(call);
    const std::string secret(secretSize, 'x');
    sd_bus_message_open_container(reply.get(), 'r', "oayays");
    sd_bus_message_append(reply.get(), "oay", "/s", 0);
    sd_bus_message_append_array(reply.get(), 'y', secret.data(), secret.size());
    sd_bus_message_append(reply.get(), "s", "");
    sd_bus_message_close_container(reply.get());
    return dbus::send(reply);
}

TEST_F(LyingServiceTest, NeitherNonsenseNorAPromptNorADeathIsAnAnswer)
{
    const auto saved = [this] { return save("x"); };
    const auto removed = [this] { return remove() == success; };
    const auto found = [this] { return read(); };
    answer = [](sd_bus_message* call) { return answerWell(call, SecretSession::maximumBytes, "/"); };
    EXPECT_TRUE(whileServed(saved) && whileServed(removed)) << "the liar can be honest";
    EXPECT_EQ(whileServed(found).value_or("").size(), SecretSession::maximumBytes);

    answer = [](sd_bus_message* call) {
        return answerWell(call, SecretSession::maximumBytes + 1, "/ask/me");
    };
    EXPECT_FALSE(whileServed(saved) || whileServed(removed)) << "it would ask the user";
    EXPECT_FALSE(whileServed(found)) << "too large";

    answer = [](sd_bus_message* call) {
        if (isCall(call, "Get")) return sd_bus_reply_method_return(call, "v", "b", 0);
        return sd_bus_reply_method_return(call, "aoao", 0, 1, "/elsewhere/item");
    };
    EXPECT_EQ(whileServed([this] { return remove(); }), unavailable) << "in a locked collection";

    answer = [](sd_bus_message* call) { return sd_bus_reply_method_return(call, "as", 1, "full"); };
    EXPECT_FALSE(whileServed(saved) || whileServed(removed) || whileServed(found));

    for (const auto* last : {"OpenSession", "SearchItems"}) {
        liar = dbus::openSessionBus(loop);
        dbus::check(sd_bus_add_filter(liar.get(), nullptr, called, this), "filter");
        dbus::check(sd_bus_request_name(liar.get(), SecretSession::serviceName, 0), "name");
        bool hasDied = false;
        answer = [&](sd_bus_message* call) {
            if (!isCall(call, last)) return answerWell(call, 1, "/");
            sd_bus_close(liar.get());
            hasDied = true;
            return 1;
        };
        EXPECT_FALSE(whileServed(found)) << last;
        EXPECT_TRUE(hasDied);
    }
}

} // namespace
} // namespace velmora
