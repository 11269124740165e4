// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "WireFixture.h"

#include "bus/Records.h"

#include <unistd.h>

namespace velmora {
namespace {

using States = std::vector<HSBatteryState>;

struct XPCClientTest : WireTest {
    States pushed;
    int appeared = 0;

    std::unique_ptr<XPCClient> makeClient()
    {
        auto client = std::make_unique<XPCClient>(loop, clock, log);
        client->onStateChange = [this](const auto& state) { pushed.push_back(state); };
        client->onDaemonAppeared = [this] { ++appeared; };
        return client;
    }

    HSBatteryState at(double percentage) const
    {
        auto state = service.state;
        state.percentage = percentage;
        return state;
    }
};

TEST_F(XPCClientTest, SendsNothingBeforeItKnowsWhatIsHeldAndFollowsIt)
{
    const auto client = makeClient();
    std::vector<ChargingSettings> followed;
    std::vector<SettingsTold> told;
    client->onSettingsChange = [&] {
        followed.push_back(client->settings().value());
        told.push_back(client->told().value());
    };
    for (std::size_t life = 1; life <= 2; ++life) {
        followed.clear();
        told.clear();
        const auto daemon = startDaemon();
        ASSERT_TRUE(eventually([&] {
            if (followed.empty()) client->updateSettings({.customChargeLimit = 33});
            return !followed.empty();
        }));
        EXPECT_EQ(followed.front(), service.held);
        const auto sent = [&](double limit) {
            service.received.clear();
            client->updateSettings({.customChargeLimit = limit});
            settle(*client);
            settle(*client); // behind the answer who sent it
            return service.received.size() == 1 && service.received.back().customChargeLimit == limit;
        };
        EXPECT_TRUE(sent(70));
        EXPECT_FALSE(sent(70)) << "the daemon has it";
        KeyedArchive news;
        news.encode("customChargeLimit", 65.0);
        news.encode("customHysteresis", 1e9); // cannot be
        daemon->charger().settingsChanged(news);
        daemon->charger().settingsChanged(news, service.callers.back());
        ASSERT_TRUE(eventually([&] { return followed.size() == 3; }));
        EXPECT_EQ(followed.back(), (ChargingSettings{.customChargeLimit = 65}))
            << "the others as it sent them";
        EXPECT_EQ(told[1].byOthers, differing({}, {.customChargeLimit = 65})) << "not what this one wanted";
        EXPECT_EQ(told[2].held,
                  (ChargingSettings{
                      .isAppleRecommendedMode = false, .customChargeLimit = 65, .lowBatteryLimit = 15}))
            << "what was merely sent is not held";
        EXPECT_TRUE(told[0].isAnswer && !told[1].isAnswer && told[2].isAnswer);
        EXPECT_TRUE(told[2].byOthers.none()) << "an answer tells nothing of others";
        EXPECT_TRUE(sent(70)) << "refused, or changed by somebody else";
    }
    EXPECT_TRUE(eventually([&] { return !client->settings(); })) << "there is nobody to ask";
}

TEST_F(XPCClientTest, LetsAPersonBeAskedForWhatAPersonWantsAloneAndTellsOfARefusal)
{
    const auto daemon = startDaemon();
    const auto client = makeClient();
    std::vector<std::string> refusals;
    client->onRefusal = [&] { refusals.push_back(client->refusal()); };
    ASSERT_TRUE(eventually([&] { return client->settings().has_value(); }));
    client->asPerson([&] { client->updateSettings({.customChargeLimit = 70}); });
    client->updateSettings({.customChargeLimit = 71});
    ASSERT_TRUE(eventually([&] { return service.deeds.size() == 2; }));
    const auto me = " by " + std::to_string(getuid());
    EXPECT_EQ(service.deeds, (std::vector{"70" + me + "!", "71" + me}));
    daemon->charger().changeRefused(Refused::needsPassword, service.callers.back());
    ASSERT_TRUE(eventually([&] { return !refusals.empty(); }));
    client->updateSettings({.customChargeLimit = 70}); // an echo
    EXPECT_EQ(refusals, std::vector<std::string>{"needs password"});
    client->asPerson([&] { client->updateSettings({.customChargeLimit = 72}); });
    EXPECT_EQ(refusals.back(), "") << "a person has tried anew";
    daemon->charger().settingsChanged(archived({.customChargeLimit = 72}));
    ASSERT_TRUE(eventually([&] { return client->told()->held.customChargeLimit == 72; }));
    client->updateSettings({.customChargeLimit = 73});
    daemon->charger().changeRefused(Refused::denied, service.callers.back());
    daemon->charger().settingsChanged(archived({.customChargeLimit = 74}));
    ASSERT_TRUE(eventually([&] { return client->told()->held.customChargeLimit == 74; }));
    EXPECT_EQ(refusals.back(), "") << "nobody asked for that one";
    EXPECT_EQ(log.count("needs password"), 1U);
}

TEST_F(XPCClientTest, EachQuestionForAChargeBeforeAJourneyIsAnsweredOnce)
{
    const auto client = makeClient();
    std::vector<bool> answers;
    const auto ask = [&] {
        const auto before = answers.size();
        client->beginTravelCharge([&](bool isBegun) { answers.push_back(isBegun); });
        return eventually([&] { return answers.size() > before; });
    };
    EXPECT_TRUE(ask()) << "without a daemon";
    {
        const auto daemon = startDaemon();
        EXPECT_TRUE(ask());
        EXPECT_EQ(service.deeds.size(), 1U);
    }
    Peer odd(loop);
    std::function<int(sd_bus_message*)> answer;
    odd.serve([&](sd_bus_message* call) {
        const bool isAsked = sd_bus_message_is_method_call(call, nullptr, "BeginTravelCharge") > 0;
        return isAsked ? answer(call) : 0;
    });
    answer = [](auto* call) { return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "no"); };
    EXPECT_TRUE(ask());
    answer = [](auto* call) { return sd_bus_reply_method_return(call, "s", "yes"); };
    EXPECT_TRUE(ask());
    answer = [](auto* call) { return sd_bus_reply_method_return(call, "b", 0); };
    EXPECT_TRUE(ask());
    answer = [&](auto*) { return odd.hangUp(), 1; };
    EXPECT_TRUE(ask()) << "it died in the call";
    EXPECT_EQ(answers, (std::vector<bool>{false, true, false, false, false, false}));
}

TEST_F(XPCClientTest, MayBeDestroyedByWhatItCalls)
{
    const auto daemon = startDaemon();
    int answers = 0;
    const auto drop = [&](std::unique_ptr<XPCClient>& client) { ++answers, client.reset(); };
    auto byState = makeClient(), byHistory = makeClient(), byPush = makeClient(), unanswered = makeClient();
    auto byCharger = makeClient();
    byCharger->onChargerChange = [&] { drop(byCharger); };
    settle(*byPush);
    byPush->onStateChange = [&](const auto&) { drop(byPush); };
    byState->fetchCurrentState([&](const auto&) { drop(byState); });
    byHistory->fetchHistory([&](auto) { drop(byHistory); });
    unanswered->fetchHistory([&](auto) { answers += 100; });
    unanswered.reset();
    daemon->protocol().push(at(1));
    EXPECT_TRUE(eventually([&] { return answers == 4; }));
    EXPECT_FALSE(byState || byHistory || byPush || byCharger);
}

TEST_F(XPCClientTest, NeitherABusThatEndsNorOneThatIsNotThereIsMoreThanALogLine)
{
    const auto use = [](XPCClient& client) {
        client.fetchCurrentState([](const auto&) { FAIL(); });
        client.fetchHistory([](const auto&) { FAIL(); });
        client.updateSettings({});
        client.beginTravelCharge([](bool isBegun) { EXPECT_FALSE(isBegun); });
    };
    const auto daemon = startDaemon();
    const auto client = makeClient();
    settle(*client);
    bool isBusLost = false;
    daemon->onBusLost = [&] { isBusLost = true; };
    bus.stop();
    ASSERT_TRUE(eventually([&] { return isBusLost && log.count("until Velmora starts again") == 1; }));
    use(*client);
    daemon->protocol().push(at(1));
    daemon->protocol().push(at(2));
    EXPECT_EQ(log.count("Could not push"), 1U);

    log.clear();
    const auto alone = makeClient();
    use(*alone);
    for (int turn = 0; turn < 5; ++turn) serve(); // in which an answer would come
    EXPECT_EQ(log.count(), 1U);
}

TEST_F(XPCClientTest, ARecordOfALyingDaemonTakesDefaults)
{
    const HSBatteryState nothing(0, false, "Unknown", "Nominal", 0, 0, 0, 0, false);
    auto past = nothing;
    past.isCharging = true;
    auto cut = nothing;
    cut.powerSource = std::string(dbus::maximumTextBytes - 1, 'x'); // not through the two-byte character
    const std::string longText = cut.powerSource + "\u00e9";
    const auto otherTypes = [](sd_bus_message* reply) {
        return sd_bus_message_append(reply, "a{sv}", 4, "percentage", "x", std::int64_t{5}, "isCharging", "s",
                                     "true", "timeToFull", "i", 7, "powerSource", "as", 1, "Battery");
    };
    const auto nested = [](sd_bus_message* reply) {
        return sd_bus_message_append(reply, "a{sv}", 3, "a", "a{sv}", 1, "deep", "v", "(ss)", "x", "y", "c",
                                     "v", "v", "b", 1, "isCharging", "b", 1);
    };
    const auto longOne = [&](sd_bus_message* reply) {
        return sd_bus_message_append(reply, "a{sv}", 1, "powerSource", "s", longText.c_str());
    };
    const auto tooMany = [](sd_bus_message* reply) {
        KeyedArchive archive;
        for (std::size_t i = 0; i < dbus::maximumKeys; ++i) archive.encode(std::to_string(i), true);
        archive.encode("isCharging", true);
        return dbus::append(reply, archive), 0;
    };
    const std::tuple<const char*, std::function<int(sd_bus_message*)>, HSBatteryState> cases[] = {
        {"other types", otherTypes, nothing},
        {"nested strangers before a key", nested, past},
        {"a long text", longOne, cut},
        {"too many keys", tooMany, nothing},
    };
    Peer liar(loop);
    std::function<int(sd_bus_message*)> append;
    liar.serve([&](sd_bus_message* call) {
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(call, &reply);
        const dbus::Message owned(reply);
        append(reply);
        return sd_bus_send(nullptr, reply, nullptr);
    });
    const auto client = makeClient();
    for (const auto& [what, lie, expected] : cases) {
        SCOPED_TRACE(what);
        append = lie;
        std::optional<HSBatteryState> state;
        client->fetchCurrentState([&](const auto& answer) { state = answer; });
        ASSERT_TRUE(eventually([&] { return state.has_value(); }));
        EXPECT_EQ(*state, expected);
    }
}

TEST_F(XPCClientTest, AnAnswerThatIsNoRecordIsNoneWithOneLogLineACause)
{
    Peer liar(loop);
    int asked = 0;
    liar.serve(
        [&](sd_bus_message* call) { return ++asked, sd_bus_reply_method_return(call, "as", 1, "full"); });
    const auto client = makeClient();
    for (int time = 0; time < 3; ++time) {
        client->fetchCurrentState([](const auto&) { FAIL(); });
        client->fetchHistory([](const auto&) { FAIL(); });
    }
    EXPECT_TRUE(eventually([&] { return asked == 8 && log.count() == 4; }));
    liar.hangUp();
    const auto daemon = startDaemon();
    settle(*client);
    EXPECT_EQ(log.count("Ignored a state"), 1U);
    EXPECT_EQ(log.count("Ignored a history"), 1U);
    EXPECT_EQ(log.count("charger's properties"), 1U);
}

TEST_F(XPCClientTest, FollowsWhatTheDaemonTellsOfTheCharger)
{
    const auto client = makeClient();
    int changes = 0;
    client->onChargerChange = [&] { ++changes; };
    for (int life = 1; life <= 2; ++life) {
        const auto daemon = startDaemon();
        ASSERT_TRUE(eventually([&] { return client->charger() == service.report; }));
        service.report.mode = "quick charge";
        service.report.endThreshold = 100 - life;
        service.report.lastActionDate = Date{7e8};
        daemon->charger().changed(service.report);
        ASSERT_TRUE(eventually([&] { return client->charger() == service.report; }));
        daemon->charger().changed(service.report);
        settle(*client);
        EXPECT_EQ(changes, 2 * life) << "told, changed";
        service.report.mode = "off";
        service.report.cycleCount = 7;
    }
    EXPECT_TRUE(eventually([&] { return !client->charger(); })) << "there is nobody to ask";
}

TEST_F(XPCClientTest, TellsOfEventsAndDropsWhatIsNone)
{
    Peer daemon(loop);
    daemon.serve([](sd_bus_message*) { return 0; });
    const auto client = makeClient();
    std::vector<ChargeEvent> events;
    client->onEvent = [&](const auto& event) { events.push_back(event); };
    const auto tell = [&](const auto& append) {
        daemon.say(wire::objectPath, wire::charger::interface, "Occurred", append);
    };
    const auto tellRecord = [&](const KeyedArchive& record) {
        tell([&](auto* signal) { dbus::append(signal, record); });
    };
    KeyedArchive stranger;
    stranger.encode("kind", std::string("meteor"));
    const ChargeEvent unplugged{.kind = ChargeEvent::Kind::powerSourceChanged, .powerSource = "Battery"};
    ASSERT_TRUE(eventually([&] { // until the client knows whose signals count
        tellRecord(unplugged.archived());
        return !events.empty();
    }));
    daemon.sync();
    serve();
    events.clear();
    for (int time = 0; time < 3; ++time) {
        tellRecord(stranger);
        tellRecord(ChargeEvent{ChargeEvent::Kind::levelLost}.archived());
        tell([](auto* signal) { sd_bus_message_append(signal, "s", "unplugged"); });
    }
    const ChargeEvent lost{.kind = ChargeEvent::Kind::levelLost, .level = 20};
    tellRecord(lost.archived());
    ASSERT_TRUE(eventually([&] { return std::ranges::count(events, lost) == 1; }));
    std::erase(events, unplugged);
    EXPECT_EQ(events, std::vector{lost});
    EXPECT_EQ(log.count("Ignored an event"), 1U);
}

TEST_F(XPCClientTest, AHugeHistoryLeavesTheLoopToOthers)
{
    constexpr std::size_t many = 50'000;
    service.history.assign(many, service.history.front());
    service.history.back().percentage = 99;
    const auto daemon = startDaemon();
    const auto client = makeClient();
    std::vector<HSHistorySnapshot> history;
    std::size_t turns = 0;
    std::function<void()> others = [&] { ++turns, loop.post(others); };
    client->fetchHistory([&](auto samples) { history = std::move(samples); });
    loop.runOnce(std::chrono::seconds{1});
    settle(*client); // behind the history: it has come, and is not read yet
    EXPECT_TRUE(history.empty());
    others();
    ASSERT_TRUE(eventually([&] { return !history.empty(); }));
    EXPECT_EQ(history.size(), many);
    EXPECT_EQ(history.back(), service.history.back());
    EXPECT_GT(turns, 50U);
}

TEST_F(XPCClientTest, APushOfAnybodyElseIsDropped)
{
    const auto daemon = startDaemon();
    const auto client = makeClient();
    ASSERT_TRUE(eventually([&] { return client->settings().has_value(); }));
    client->updateSettings({});
    settle(*client);
    ASSERT_TRUE(eventually([&] { return !service.callers.empty(); }));
    const auto victim = service.callers.front();
    client->onEvent = [](const auto&) { FAIL() << "an event of anybody's"; };

    Peer spoofer(loop);
    const auto send = [&](const char* path, const char* interface, const char* member, const auto& append) {
        spoofer.say(path, interface, member, append, victim.c_str());
    };
    send(dbus::busPath, dbus::busName, "NameOwnerChanged", [&](auto* signal) {
        sd_bus_message_append(signal, "sss", wire::serviceName, "", spoofer.name().c_str());
    });
    send(wire::objectPath, wire::client_protocol::interface, "batteryStateDidChange",
         [&](auto* signal) { dbus::append(signal, at(66).archived()); });
    send(wire::objectPath, "org.freedesktop.DBus.Properties", "PropertiesChanged", [&](auto* signal) {
        sd_bus_message_append(signal, "sa{sv}as", ChargerReport::interface, 1, "Mode", "s", "paused", 0);
    });
    send(wire::objectPath, wire::charger::interface, "ChangeRefused",
         [&](auto* signal) { sd_bus_message_append(signal, "s", "denied"); });
    send(wire::objectPath, wire::charger::interface, "Occurred",
         [](auto* signal) { dbus::append(signal, ChargeEvent{ChargeEvent::Kind::thermalPause}.archived()); });
    spoofer.sync();
    daemon->protocol().push(at(1));
    ASSERT_TRUE(eventually([&] { return !pushed.empty(); }));
    EXPECT_EQ(pushed, States{at(1)});
    EXPECT_EQ(appeared, 0);
    EXPECT_EQ(client->charger(), service.report);
    EXPECT_EQ(client->refusal(), "");
}

} // namespace
} // namespace velmora
