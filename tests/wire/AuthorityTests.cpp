// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/Authority.h"

#include "LoopTest.h"
#include "PrivateBus.h"
#include "RecordingLog.h"

#include <functional>

namespace velmora {
namespace {

/// A polkit that keeps every question until the test answers it.
class FakePolkit {
public:
    struct Question {
        std::string subject, action, id;
        std::uint32_t flags;
        std::shared_ptr<sd_bus_message> call;

        void decide(bool isAllowed, bool isChallenge) const
        {
            sd_bus_reply_method_return(call.get(), "(bba{ss})", int{isAllowed}, int{isChallenge}, 0);
        }
    };

    explicit FakePolkit(const EventLoop& loop) : bus_(dbus::openSystemBus(loop))
    {
        dbus::check(sd_bus_add_object(bus_.get(), out(object_), "/org/freedesktop/PolicyKit1/Authority",
                                      dbus::serve<FakePolkit, &FakePolkit::called>, this),
                    "object");
        dbus::check(sd_bus_request_name(bus_.get(), "org.freedesktop.PolicyKit1", 0), "name");
    }

    void leave() { bus_.reset(); }

    std::vector<Question> questions;
    std::vector<std::string> cancelled;

private:
    int called(sd_bus_message* call)
    {
        const char *kind = nullptr, *key = nullptr, *subject = nullptr, *action = nullptr, *id = nullptr;
        if (sd_bus_message_is_method_call(call, nullptr, "CancelCheckAuthorization") > 0) {
            dbus::check(sd_bus_message_read(call, "s", &id), "read");
            cancelled.emplace_back(id);
            return 1;
        }
        std::uint32_t flags = 0;
        dbus::check(sd_bus_message_read(call, "(sa{sv})s", &kind, 1, &key, "s", &subject, &action), "read");
        dbus::check(sd_bus_message_skip(call, "a{ss}"), "skip");
        dbus::check(sd_bus_message_read(call, "us", &flags, &id), "read");
        EXPECT_EQ(std::string(kind) + ' ' + key, "system-bus-name name");
        questions.push_back({subject, action, id, flags, dbus::keep(call)});
        return 1;
    }

    dbus::Bus bus_;
    dbus::Slot object_;
};

struct AuthorityTest : LoopTest {
    /// Decisions, in order: "a yes", "b denied".
    void ask(const std::string& busName, bool mayInteract = false)
    {
        authority->ask({busName, 1000, mayInteract}, [this, busName](std::optional<Refused> why) {
            decisions.push_back(busName + ' ' + (why ? textOf(*why) : "yes"));
        });
    }
    bool isAsked(std::size_t count)
    {
        return eventually([&] { return polkit->questions.size() == count; });
    }
    bool isDecided(std::size_t count)
    {
        return eventually([&] { return decisions.size() == count; });
    }

    PrivateBus bus;
    RecordingLog log;
    dbus::Bus connection = dbus::openSystemBus(loop);
    std::optional<Authority> authority{std::in_place, connection.get(), log};
    std::optional<FakePolkit> polkit{loop};
    std::vector<std::string> decisions;
};

TEST_F(AuthorityTest, AsksAboutTheConnectionAndTakesNothingButAYesForOne)
{
    const auto error = [](const auto& question) {
        sd_bus_reply_method_errorf(question.call.get(), "org.freedesktop.PolicyKit1.Error.Failed",
                                   "no such action");
    };
    const std::pair<std::function<void(const FakePolkit::Question&)>, const char*> cases[] = {
        {[](const auto& question) { question.decide(true, false); }, "yes"},
        {[](const auto& question) { question.decide(false, false); }, "denied"},
        {[](const auto& question) { question.decide(false, true); }, "needs password"},
        {error, "unavailable"},
        {error, "unavailable"},
        {[](const auto& question) { sd_bus_reply_method_return(question.call.get(), "b", 1); },
         "unavailable"},
    };
    for (const auto& [answer, decision] : cases) {
        const bool mayInteract = decisions.size() % 2 == 1;
        ask(":1.77", mayInteract);
        ASSERT_TRUE(isAsked(decisions.size() + 1));
        const auto& question = polkit->questions.back();
        EXPECT_EQ(question.subject, ":1.77");
        EXPECT_EQ(question.action, "app.velmora.daemon.change-settings");
        EXPECT_EQ(question.flags, mayInteract ? 1U : 0U);
        answer(question);
        ASSERT_TRUE(isDecided(polkit->questions.size()));
        EXPECT_EQ(decisions.back(), std::string(":1.77 ") + decision);
    }
    EXPECT_EQ(log.count("no such action"), 1U);
    EXPECT_EQ(log.count(), 1U);
}

TEST_F(AuthorityTest, OneThatIsSlowHoldsUpNobodyAndOneThatNeverAnswersIsLeft)
{
    ask("a", true);
    ask("b");
    ask("c");
    ASSERT_TRUE(isAsked(3));
    polkit->questions[2].decide(true, false);
    ASSERT_TRUE(isDecided(1));
    polkit->questions[0].decide(true, false);
    ASSERT_TRUE(isDecided(2));
    EXPECT_EQ(decisions, (std::vector<std::string>{"c yes", "a yes"}));
    authority.reset(); // with the question about b
    polkit->questions[1].decide(true, false);
    for (int turn = 0; turn < 5; ++turn) serve();
    EXPECT_EQ(decisions.size(), 2U);
}

TEST_F(AuthorityTest, OfOneCallerTheNewestQuestionCountsAndNoneOnceItHasLeft)
{
    ask("a", true);
    ask("a", true);
    EXPECT_EQ(decisions, std::vector<std::string>{"a superseded"});
    ASSERT_TRUE(isAsked(2));
    EXPECT_EQ(polkit->cancelled, std::vector{polkit->questions[0].id});
    EXPECT_NE(polkit->questions[0].id, polkit->questions[1].id);
    polkit->questions[0].decide(true, false); // as it was on its way
    polkit->questions[1].decide(false, false);
    ASSERT_TRUE(isDecided(2));
    EXPECT_EQ(decisions.back(), "a denied");

    ask("a", true);
    ASSERT_TRUE(isAsked(3));
    authority->forget("a");
    authority->forget("nobody");
    ASSERT_TRUE(eventually([&] { return polkit->cancelled.size() == 2; }));
    EXPECT_EQ(polkit->cancelled.back(), polkit->questions[2].id);
    polkit->questions[2].decide(true, false);
    ask("b");
    ASSERT_TRUE(isAsked(4));
    polkit->questions[3].decide(true, false);
    ASSERT_TRUE(isDecided(3));
    EXPECT_EQ(decisions.back(), "b yes") << "and nothing more of a";
}

TEST_F(AuthorityTest, WithoutPolkitNobodyIsAllowedAnything)
{
    ask("a", true);
    ASSERT_TRUE(isAsked(1));
    polkit->leave();
    ASSERT_TRUE(isDecided(1));
    for (const auto* caller : {"a", "b"}) ask(caller);
    ASSERT_TRUE(isDecided(3));
    EXPECT_EQ(decisions, (std::vector<std::string>{"a unavailable", "a unavailable", "b unavailable"}));
    EXPECT_EQ(log.count("only root may"), 1U);

    polkit.emplace(loop);
    ask("a");
    ASSERT_TRUE(isAsked(1));
    polkit->questions[0].decide(true, false);
    ASSERT_TRUE(isDecided(4));
    polkit->leave();
    ask("a");
    ASSERT_TRUE(isDecided(5));
    EXPECT_EQ(log.count("only root may"), 2U) << "it had come back";
    bus.stop();
    ask("a");
    ASSERT_TRUE(isDecided(6));
    EXPECT_EQ(decisions.back(), "a unavailable");
}

} // namespace
} // namespace velmora
