// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/DesktopNotificationCenter.h"

#include "Dunst.h"
#include "LoopTest.h"
#include "ManualLoop.h"
#include "PrivateBus.h"

#include <csignal>
#include <gmock/gmock.h>

namespace velmora {
namespace {

using testing::ElementsAre;
using testing::Field;

/// The adapter on a bus of its own.
struct DesktopNotificationCenterTest : LoopTest {
    DesktopNotificationCenterTest()
        : session(dbus::openSystemBus(loop)), center(std::in_place, loop, session.get(), sender)
    {
    }

    void add(const char* identifier, std::string title, std::string body = "",
             std::optional<InterruptionLevel> level = std::nullopt)
    {
        center->add({.identifier = identifier,
                     .title = std::move(title),
                     .body = std::move(body),
                     .interruptionLevel = level},
                    [this](const auto& error) { outcomes.push_back(error.value_or("")); });
    }
    bool areTold(std::size_t number)
    {
        return eventually([&] { return outcomes.size() >= number; });
    }
    void askLeave()
    {
        center->requestAuthorization([this](bool isGranted, const auto&) { grants.push_back(isGranted); });
    }
    /// All that is on its way to the bus and back has arrived.
    void settle()
    {
        for (int i = 0; i < 2; ++i)
            answer(session.get(),
                   dbus::newCall(session.get(), dbus::busName, dbus::busPath, dbus::busName, "GetId"));
    }

    const notifications::Sender sender{.name = "Velmora", .desktopEntry = "app.velmora.Velmora"};
    PrivateBus bus;
    dbus::Bus session;
    std::optional<DesktopNotificationCenter> center;
    std::vector<std::string> outcomes; ///< of each notice: empty for success
    std::vector<bool> grants;
};

struct DunstTest : DesktopNotificationCenterTest {
    void SetUp() override
    {
        if (!Dunst::isInstalled()) GTEST_SKIP() << "dunst or Xvfb is not installed";
        dunst.emplace(bus.address());
    }
    bool isThere()
    {
        return eventually([&] { return center->server().name == "dunst"; });
    }
    bool areDisplayed(int number)
    {
        return eventually([&] { return dunst->displayed() == number; });
    }

    std::optional<Dunst> dunst;
};

TEST_F(DunstTest, ShowsReplacesAndRemovesUnderTheIdentifier)
{
    using enum InterruptionLevel;
    askLeave();
    ASSERT_TRUE(isThere());
    EXPECT_THAT(grants, ElementsAre(true)) << "once there is a server";
    add("a", "One", "5 < 6 & <b>7</b>\n\xff\u202e", passive);
    ASSERT_TRUE(areTold(1));
    add("a", "Two", "", active);
    add("a", "Three", "", critical);
    add("b", "Other");
    ASSERT_TRUE(areTold(4));
    EXPECT_THAT(outcomes, testing::Each(""));
    EXPECT_TRUE(areDisplayed(2));
    const auto shown = dunst->shown();
    ASSERT_THAT(shown, testing::Contains(Field(&Dunst::Shown::title, "Three")));
    for (const auto& one : shown) EXPECT_EQ(one.urgency == "CRITICAL", one.title == "Three");
    EXPECT_EQ(shown.front().body, "5 &lt; 6 &amp; &lt;b&gt;7&lt;/b&gt; ?");
    EXPECT_EQ(shown.front().urgency, "LOW");
    EXPECT_EQ(shown.front().application, "Velmora");
    EXPECT_EQ(shown.front().desktopEntry, "app.velmora.Velmora");

    center->removePending({"a"});
    center->removeDelivered({"a", "unknown"});
    EXPECT_TRUE(areDisplayed(1));
    add("c", "Taken back, and wanted again");
    center->removePending({"c"});
    add("c", "Wanted");
    ASSERT_TRUE(areTold(6));
    EXPECT_TRUE(areDisplayed(2));
}

TEST_F(DunstTest, ARestartForgetsTheNumbersAndAHangHurtsNobody)
{
    ASSERT_TRUE(isThere());
    add("a", "Before");
    ASSERT_TRUE(areTold(1));
    dunst->stop();
    ASSERT_TRUE(eventually([&] { return center->server().name.empty(); }));
    add("a", "Without a server");
    ASSERT_TRUE(areTold(2));
    EXPECT_NE(outcomes.back(), "");
    dunst->start();
    ASSERT_TRUE(isThere());
    const auto theirs = notifications::newCall(session.get(), notifications::serviceName, "Notify");
    dbus::check(sd_bus_message_append(theirs.get(), "susssasa{sv}i", "Other", 0, "", "Theirs", "", 0, 0, -1),
                "Notify");
    answer(session.get(), theirs);
    add("a", "After");
    ASSERT_TRUE(areTold(3));
    EXPECT_TRUE(areDisplayed(2)) << "another program's notice with the number of ours stays";

    dunst->signal(SIGSTOP);
    for (int i = 0; i < 200; ++i) add(("n" + std::to_string(i)).c_str(), "Flood");
    ASSERT_TRUE(areTold(3 + 200 - DesktopNotificationCenter::maximumWaiting));
    EXPECT_NE(outcomes.back(), "");
    for (int i = 0; i < 200; ++i) center->removePending({"n" + std::to_string(i)});
    settle();
    dunst->signal(SIGCONT);
    ASSERT_TRUE(areTold(203));
    EXPECT_TRUE(areDisplayed(2)) << "what was taken back meanwhile is not shown";
}

TEST_F(DunstTest, SaysWhetherItIsToDisturbAndWhatAPersonDid)
{
    std::vector<NotificationResponse> responses;
    const auto heard = center->observeResponses([&](const auto& one) { responses.push_back(one); });
    ASSERT_TRUE(isThere());
    EXPECT_TRUE(eventually([&] { return center->server().isInhibited == false; }));
    dunst->pause(true);
    EXPECT_TRUE(eventually([&] { return center->server().isInhibited == true; }));
    dunst->pause(false);
    EXPECT_TRUE(eventually([&] { return center->server().isInhibited == false; }));
    add("a", "Click");
    ASSERT_TRUE(areTold(1));
    ASSERT_TRUE(areDisplayed(1));
    dunst->click();
    ASSERT_TRUE(eventually([&] { return !responses.empty(); }));
    EXPECT_EQ(responses.front().request, "a");
    EXPECT_EQ(responses.front().action, NotificationResponse::click);
}

TEST_F(DunstTest, OneThatTheBusStartsIsAsGoodAsOneThatRuns)
{
    const TemporaryFolder services;
    const PrivateBus other("</policy><servicedir>" + services.path().string() +
                           "</servicedir><policy context=\"default\">");
    session = dbus::openSystemBus(loop);
    dunst.emplace(other.address());
    dunst->stop();
    services.write("notices.service", std::string("[D-BUS Service]\nName=") + notifications::serviceName +
                                          "\nExec=" + dunst->program() + "\nUser=root\n");
    answer(session.get(),
           dbus::newCall(session.get(), dbus::busName, dbus::busPath, dbus::busName, "ReloadConfig"));
    center.emplace(loop, session.get(), sender);
    askLeave();
    ASSERT_TRUE(eventually([&] { return center->server().isStartable; }));
    EXPECT_TRUE(eventually([&] { return grants.size() == 1; }));
    add("a", "First");
    ASSERT_TRUE(areTold(1));
    EXPECT_TRUE(areDisplayed(1));
    EXPECT_EQ(center->server().name, "dunst");
}

/// A server that answers as the test wants. Timers are the test's, too.
struct OddServerTest : LoopTest {
    OddServerTest()
    {
        dbus::check(sd_bus_add_object(server.get(), nullptr, notifications::objectPath,
                                      dbus::serve<OddServerTest, &OddServerTest::called>, this),
                    "object");
        dbus::check(sd_bus_request_name(server.get(), notifications::serviceName, 0), "name");
    }

    void serve() override
    {
        LoopTest::serve();
        time.runPosted();
    }
    int called(sd_bus_message* call)
    {
        const std::string member = sd_bus_message_get_member(call);
        calls.push_back(member);
        if (member == "GetCapabilities" && isMute) return 1;
        if (member == "GetCapabilities" && isAble)
            return sd_bus_reply_method_return(call, "as", 1, "actions");
        if (member == "GetCapabilities") return sd_bus_reply_method_return(call, "u", 7U);
        if (member == "Notify") {
            const char *body = nullptr, *action = nullptr;
            std::uint32_t replaced = 0;
            sd_bus_message_read(call, "susss", nullptr, &replaced, nullptr, nullptr, &body);
            sd_bus_message_enter_container(call, 'a', "s");
            sd_bus_message_read(call, "s", &action);
            notices.push_back(std::to_string(replaced) + body + (action ? action : ""));
            if (isLate) late.push_back(dbus::keep(call));
            if (isLate) return 1;
            return isAble ? sd_bus_reply_method_return(call, "u", ++last)
                          : sd_bus_reply_method_return(call, "s", "nonsense");
        }
        if (member == "CloseNotification") return 1;
        return sd_bus_reply_method_return(call, "s", "\xe2\x80\xae");
    }
    void signal(sd_bus* from, const char* member, std::uint32_t of, const char* text) const
    {
        dbus::Message message;
        dbus::check(sd_bus_message_new_signal(from, out(message), notifications::objectPath,
                                              notifications::serviceName, member),
                    member);
        dbus::check(sd_bus_message_append(message.get(), "us", of, text), member);
        sd_bus_message_set_destination(message.get(), name.c_str());
        dbus::send(message);
    }
    void add(std::string body)
    {
        center.add({.identifier = "a", .title = "", .body = std::move(body)},
                   [this](const auto& error) { outcomes.push_back(error.value_or("")); });
    }
    bool areTold(std::size_t number)
    {
        return eventually([&] { return outcomes.size() >= number; });
    }

    PrivateBus bus;
    dbus::Bus server = dbus::openSystemBus(loop), stranger = dbus::openSystemBus(loop),
              session = dbus::openSystemBus(loop);
    std::string name = [this] {
        const char* unique = nullptr;
        dbus::check(sd_bus_get_unique_name(session.get(), &unique), "name");
        return std::string(unique);
    }();
    ManualLoop time;
    DesktopNotificationCenter center{time, session.get(), {.name = "Velmora", .desktopEntry = ""}};
    bool isAble = true, isMute = false, isLate = false;
    std::vector<std::shared_ptr<sd_bus_message>> late; ///< unanswered
    std::uint32_t last = 6;                            ///< number given to a notice
    std::vector<std::string> calls, notices, outcomes;
};

TEST_F(OddServerTest, NonsenseAndSilenceHurtNobody)
{
    bool isGranted = false;
    isAble = false;
    center.requestAuthorization([&](bool granted, const auto&) { isGranted = granted; });
    EXPECT_TRUE(eventually([&] { return isGranted; })) << "it is a server";
    EXPECT_EQ(center.server().name, notifications::serviceName);
    add("<1>");
    EXPECT_TRUE(areTold(1));
    isMute = true;
    add("2");
    EXPECT_TRUE(eventually([&] { return std::ranges::count(calls, "GetCapabilities") == 2; }));
    time.advance(DesktopNotice::patience);
    ASSERT_TRUE(areTold(2));
    EXPECT_EQ(outcomes, (std::vector<std::string>{"", "The notification server does not answer."}));
    add("3");
    sd_bus_release_name(server.get(), notifications::serviceName);
    server.reset(); // dies in the call
    EXPECT_TRUE(areTold(3));
    EXPECT_NE(outcomes.back(), "");
    EXPECT_THAT(notices, ElementsAre("0<1>")) << "without markup as it is, and without actions";
    EXPECT_TRUE(eventually([&] { return center.server() == NotificationServer{}; }));
}

TEST_F(OddServerTest, WhatIsShownTooLateIsTakenBackUnlessSomethingElseTakesItsPlace)
{
    isLate = true;
    for (const auto* body : {"1", "2"}) {
        add(body);
        ASSERT_TRUE(eventually([&] { return late.size() == 1; }));
        time.advance(DesktopNotice::patience);
        EXPECT_NE(outcomes.back(), "");
        isLate = body[0] == '1';
        if (!isLate) add("3");
        serve(); // which is too early for it
        sd_bus_reply_method_return(std::exchange(late, {}).front().get(), "u", ++last);
        ASSERT_TRUE(eventually([&] { return isLate ? calls.back() == "CloseNotification" : areTold(3); }));
    }
    EXPECT_EQ(outcomes.back(), "");
    EXPECT_THAT(notices, ElementsAre("01default", "02default", "83default"));
    EXPECT_EQ(std::ranges::count(calls, "CloseNotification"), 1);
}

TEST_F(OddServerTest, WhatStandsGoesWithTheReplacementThatIsTakenBackAndNotWithoutIt)
{
    add("1");
    ASSERT_TRUE(areTold(1));
    add("2");
    center.removeDelivered({"a"});
    ASSERT_TRUE(areTold(2));
    EXPECT_THAT(notices, ElementsAre("01default", "72default"));
    add("3");
    center.removePending({"a"});
    center.removeDelivered({"a"});
    ASSERT_TRUE(areTold(3));
    EXPECT_TRUE(eventually([&] { return calls.back() == "CloseNotification"; }));
    EXPECT_EQ(notices.size(), 2U);
    EXPECT_EQ(std::ranges::count(calls, "CloseNotification"), 1);
}

TEST_F(OddServerTest, APersonsWordIsTakenOnceAndFromTheServerAlone)
{
    std::vector<std::string> heard;
    const auto subscription = center.observeResponses(
        [&](const auto& one) { heard.push_back(one.request + one.action + one.token); });
    add("1");
    ASSERT_TRUE(areTold(1));
    for (int i = 0; i < 1000; ++i) signal(stranger.get(), "ActionInvoked", 7, "default");
    signal(server.get(), "ActionInvoked", 8, "default");
    signal(server.get(), "ActionInvoked", 7, "unknown");
    signal(server.get(), "ActivationToken", 7, "token");
    for (int i = 0; i < 1000; ++i) signal(server.get(), "ActionInvoked", 7, "default");
    ASSERT_TRUE(eventually([&] { return !heard.empty(); }));
    add("2");
    ASSERT_TRUE(areTold(2));
    EXPECT_THAT(heard, ElementsAre("adefaulttoken"));
    EXPECT_THAT(notices, ElementsAre("01default", "72default"));
}

TEST_F(OddServerTest, ASessionThatEndsTakesNothingAlong)
{
    add("1");
    add("2");
    bool isAsked = false;
    center.requestAuthorization([&](bool, const auto&) { isAsked = true; });
    sd_bus_close(session.get());
    EXPECT_TRUE(areTold(2));
    center.removeDelivered({"a"});
    time.runPosted();
    EXPECT_FALSE(isAsked);
    EXPECT_NE(outcomes.back(), "");
}

TEST(DesktopNotificationCenter, WithoutASessionEveryNoticeFails)
{
    ManualLoop time;
    DesktopNotificationCenter center(time, nullptr, {});
    std::optional<std::string> outcome;
    center.add({}, [&](const auto& error) { outcome = error; });
    center.removeDelivered({""});
    EXPECT_FALSE(outcome) << "not from inside the call";
    time.runPosted();
    EXPECT_TRUE(outcome);
}

} // namespace
} // namespace velmora
