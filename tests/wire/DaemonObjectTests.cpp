// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "WireFixture.h"

#include "bus/Records.h"

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace velmora {
namespace {

struct DaemonObjectTest : WireTest {
    const std::string me = " by " + std::to_string(getuid());
};

TEST_F(DaemonObjectTest, AnnouncesWhatChangedAboutTheChargerAndNothingElse)
{
    const auto daemon = startDaemon();
    Peer listener(loop);
    std::vector<KeyedArchive> news;
    const auto heard = [](sd_bus_message* signal, void* to, sd_bus_error*) {
        sd_bus_message_skip(signal, "s");
        static_cast<std::vector<KeyedArchive>*>(to)->push_back(dbus::readArchive(signal));
        return 0;
    };
    const auto slot = dbus::match(listener.bus(), {.member = "PropertiesChanged"}, heard, &news);
    listener.sync();
    daemon->charger().changed(service.report);
    service.report.endThreshold = 60;
    service.report.lastAction = "wrote \xff 60"; // the bus would hang up on this byte
    daemon->charger().changed(service.report);
    ASSERT_TRUE(eventually([&] { return !news.empty(); }));
    KeyedArchive expected;
    expected.encode("EndThreshold", std::int64_t{60});
    expected.encode("LastAction", "wrote ? 60");
    EXPECT_EQ(news, std::vector{expected});

    // What somebody was told in between is taken back by an announcement.
    service.report.endThreshold = 100;
    const auto question = listener.call(wire::objectPath, "org.freedesktop.DBus.Properties", "GetAll");
    sd_bus_message_append(question.get(), "s", ChargerReport::interface);
    const auto told = ChargerReport::unarchived(dbus::readArchive(answer(listener.bus(), question).get()));
    EXPECT_EQ(told.endThreshold, 100);
    service.report.endThreshold = 60;
    daemon->charger().changed(service.report);
    ASSERT_TRUE(eventually([&] { return news.size() >= 3; }));
    EXPECT_EQ(news.back().decodeInteger("EndThreshold", 0), 60);
}

TEST_F(DaemonObjectTest, ShowsABatteryAsLongAsItIsThereAndOfItWhatIsKnown)
{
    service.packs = {{.name = "macsmc-battery", .power = -3.5, .cycleCount = 7}};
    const auto daemon = startDaemon();
    Peer listener(loop);
    std::vector<std::string> news;
    const auto heard = [](sd_bus_message* signal, void* to, sd_bus_error*) {
        static_cast<std::vector<std::string>*>(to)->push_back(sd_bus_message_get_member(signal));
        return 0;
    };
    const auto slot = dbus::match(listener.bus(), {.sender = wire::serviceName}, heard, &news);
    listener.sync();
    constexpr auto path = "/app/velmora/battery/macsmc_2dbattery";
    const auto ask = [&](const char* of, const char* interface, const char* member, const char* arguments) {
        const auto call = listener.call(of, interface, member);
        for (const auto* text : {BatteryReport::interface, "Voltage"})
            if (*arguments++ == 's') sd_bus_message_append(call.get(), "s", text);
        return answer(listener.bus(), call);
    };
    constexpr auto properties = "org.freedesktop.DBus.Properties";
    const auto all = ask(path, properties, "GetAll", "s ");
    EXPECT_EQ(BatteryReport::unarchived(dbus::readArchive(all.get())), service.packs.front());
    EXPECT_EQ(dbus::readArchive(ask(path, properties, "GetAll", "s ").get()).values().size(), 3U);
    const auto objects =
        ask(wire::battery::folder, wire::battery::managerInterface, "GetManagedObjects", "  ");
    EXPECT_GT(sd_bus_message_has_signature(objects.get(), wire::battery::objectsType), 0);
    for (const auto& refused : {ask(path, properties, "Get", "ss"), ask(path, properties, "Set", "ss"),
                                ask("/app/velmora/battery/BAT7", properties, "GetAll", "s ")})
        EXPECT_TRUE(sd_bus_message_is_method_error(refused.get(), nullptr));

    daemon->batteries().changed(service.packs);
    daemon->batteries().changed(service.packs);
    service.packs.front().power.reset();
    daemon->batteries().changed(service.packs);
    daemon->batteries().changed({});
    ASSERT_TRUE(eventually([&] { return news.size() >= 3; }));
    EXPECT_EQ(news, (std::vector<std::string>{"InterfacesAdded", "PropertiesChanged", "InterfacesRemoved"}));
}

TEST_F(DaemonObjectTest, NamesWhatIsWrongWithAChangeAndPassesOnWhatIsNamed)
{
    const auto daemon = startDaemon();
    Peer peer(loop);
    const auto attempt = [&](const auto& append) {
        const auto call = peer.call(wire::objectPath, wire::charger::interface, "SetSettings");
        append(call.get());
        const auto reply = answer(peer.bus(), call);
        const auto* error = sd_bus_message_get_error(reply.get());
        return std::string(error ? error->message : "done");
    };
    const auto entries = [&](const KeyedArchive& archive) {
        return attempt([&](auto* call) { dbus::append(call, archive); });
    };
    KeyedArchive changes;
    changes.encode("customChargeLimit", 70.0);
    EXPECT_EQ(entries(changes), "not for you");
    ASSERT_EQ(service.received.size(), 1U);
    EXPECT_EQ(
        service.received.front(),
        (ChargingSettings{.isAppleRecommendedMode = false, .customChargeLimit = 70, .lowBatteryLimit = 15}));
    changes.encode("customChargeLimit", 71.0);
    EXPECT_EQ(entries(changes), "customChargeLimit is given twice");
    KeyedArchive many;
    for (int i = 0; i < 10'000; ++i) many.encode("no" + std::to_string(i), true);
    EXPECT_EQ(entries(many), "there is no setting \"no0\"");
    KeyedArchive flag;
    flag.encode("notifyOnHeat", 1.0);
    EXPECT_EQ(entries(flag), "notifyOnHeat is of type \"d\" instead of \"b\"");
    EXPECT_EQ(attempt([](auto* call) {
                  sd_bus_message_append(call, "a{sv}", 1, "customHysteresis", "a{sv}", 1, "x", "u", 1);
              }),
              "customHysteresis is of type \"a{sv}\" instead of \"d\"");
    EXPECT_EQ(service.received.size(), 1U);
    EXPECT_EQ(log.count(), 0U);
}

TEST_F(DaemonObjectTest, SaysWhyItCannotHaveTheName)
{
    const auto daemon = startDaemon();
    DaemonObject second(loop, service, log);
    EXPECT_EQ(outcome(second), "another program owns app.velmora.daemon");
    const PrivateBus strict("<deny own=\"app.velmora.daemon\"/>");
    DaemonObject denied(loop, service, log);
    EXPECT_EQ(outcome(denied), "the bus does not let this user own app.velmora.daemon");
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere", 1);
    EXPECT_THROW(DaemonObject(loop, service, log), std::system_error);
}

TEST_F(DaemonObjectTest, KeepsWhoAsksForTheStateUntilThereIsOne)
{
    DaemonObject daemon(loop, service, log);
    EXPECT_EQ(outcome(daemon), "owned");
    const auto client = std::make_unique<XPCClient>(loop, clock, log);
    std::vector<double> answers;
    const auto noted = [&](const HSBatteryState& state) { answers.push_back(state.percentage); };
    constexpr auto kept = Clients::maximumWaiting;
    for (std::size_t call = 0; call <= kept; ++call) client->fetchCurrentState(noted);
    ASSERT_TRUE(eventually([&] { return !answers.empty(); }));
    EXPECT_EQ(answers.size(), 1U) << "one more than is kept is told what there is";
    service.state.percentage = 42;
    daemon.serve();
    ASSERT_TRUE(eventually([&] { return answers.size() == kept + 1; }));
    EXPECT_EQ(answers.back(), 42);
}

TEST_F(DaemonObjectTest, AnswersOnceItHasSeenTheChargerAndWithWhatALookShows)
{
    DaemonObject daemon(loop, service, log);
    EXPECT_EQ(outcome(daemon), "owned");
    service.looks = [this] { ++service.report.endThreshold; };
    Peer peer(loop);
    const auto question = [&](const char* member, const char* name) {
        auto call = peer.call(wire::objectPath, "org.freedesktop.DBus.Properties", member);
        sd_bus_message_append(call.get(), "s", ChargerReport::interface);
        if (name) sd_bus_message_append(call.get(), "s", name);
        return call;
    };
    const auto valueIn = [](sd_bus_message* reply) {
        std::int64_t value = -1;
        sd_bus_message_read(reply, "v", "x", &value);
        return value;
    };
    std::optional<std::int64_t> early;
    const auto noted = [](sd_bus_message* reply, void* to, sd_bus_error*) {
        return sd_bus_message_read(reply, "v", "x",
                                   &static_cast<std::optional<std::int64_t>*>(to)->emplace());
    };
    sd_bus_call_async(peer.bus(), nullptr, question("Get", "EndThreshold").get(), noted, &early, 0);
    ASSERT_TRUE(answer(peer.bus(), peer.call(wire::objectPath, "org.freedesktop.DBus.Peer", "Ping")));
    EXPECT_FALSE(early) << "nothing was seen yet, and so no lack of anything either";
    daemon.serve();
    ASSERT_TRUE(eventually([&] { return early.has_value(); }));
    const auto before = service.report.endThreshold;
    EXPECT_EQ(valueIn(answer(peer.bus(), question("Get", "EndThreshold")).get()), before + 1)
        << "a property is a question too";
    const auto all = dbus::readArchive(answer(peer.bus(), question("GetAll", nullptr)).get());
    EXPECT_EQ(all.decodeInteger("EndThreshold", 0), before + 2);
    EXPECT_EQ(valueIn(answer(peer.bus(), question("Get", "NoSuchThing")).get()), -1);
}

TEST_F(DaemonObjectTest, BelievesLogindAloneAndHasItWaitWithASleep)
{
    const auto daemon = startDaemon();
    int resumed = 0;
    daemon->onResumed = [&] { ++resumed; };
    Peer peer(loop);
    sd_bus_message* made = nullptr;
    ASSERT_GE(sd_bus_call_method(peer.bus(), dbus::busName, dbus::busPath, dbus::busName, "GetNameOwner",
                                 nullptr, &made, "s", wire::serviceName),
              0);
    const dbus::Message owner(made);
    const char* name = nullptr;
    sd_bus_message_read(made, "s", &name);
    const auto wakeUp = [&](bool isSleep = false) {
        const auto append = [&](auto* signal) { sd_bus_message_append(signal, "b", isSleep); };
        peer.say("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep", append,
                 name);
    };
    wakeUp();
    peer.sync();
    ASSERT_GE(sd_bus_request_name(peer.bus(), "org.freedesktop.login1", 0), 0);
    wakeUp();
    ASSERT_TRUE(eventually([&] { return resumed > 0; }));
    EXPECT_EQ(resumed, 1);

    // And for as long as it is asked to, the machine waits with its sleep.
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const FileDescriptor end(pipe[0]);
    FileDescriptor held(pipe[1]); // of which the daemon gets a copy
    const auto inhibit = [](sd_bus_message* call, void* self, sd_bus_error*) {
        auto& given = *static_cast<FileDescriptor*>(self);
        const int sent = sd_bus_reply_method_return(call, "h", given.get());
        given = FileDescriptor();
        return sent;
    };
    dbus::Slot login;
    ASSERT_GE(sd_bus_add_object(peer.bus(), out(login), "/org/freedesktop/login1", inhibit, &held), 0);
    const auto isWaiting = [&] {
        pollfd state{end.get(), POLLIN, 0};
        return ::poll(&state, 1, 0) == 0;
    };
    std::function<void()> done;
    daemon->onSleep = [&](auto ready) { done = std::move(ready); };
    daemon->delaySleep(true);
    ASSERT_TRUE(eventually([&] { return !held; }));
    wakeUp(true);
    ASSERT_TRUE(eventually([&] { return static_cast<bool>(done); }));
    EXPECT_TRUE(isWaiting());
    done();
    EXPECT_TRUE(eventually([&] { return !isWaiting(); }));
}

TEST(CallBudgetTest, GivesEachUserAFewAtOnceAndThenOneNowAndThen)
{
    CallBudget budget;
    const CallBudget::Time now{};
    int granted = 0;
    for (int call = 0; call < 100; ++call) granted += budget.spend(7, now);
    EXPECT_EQ(granted, CallBudget::atOnce);
    EXPECT_TRUE(budget.spend(8, now));
    EXPECT_FALSE(budget.spend(7, now + CallBudget::refill / 2));
    EXPECT_TRUE(budget.spend(7, now + CallBudget::refill));
    EXPECT_FALSE(budget.spend(7, now + CallBudget::refill));
}

TEST_F(DaemonObjectTest, KeepsTheOrderOfACallerItDoesNotKnowYetAndNoticesItLeave)
{
    const auto daemon = startDaemon();
    Peer caller(loop);
    const auto name = caller.name();
    caller.send({.customChargeLimit = 70});
    caller.tell(caller.call(wire::daemon_protocol::toggleCharging));
    caller.tell(
        caller.call(wire::objectPath, wire::charger::interface, wire::charger::beginTravelCharge.selector));
    caller.send({.customChargeLimit = 90});
    ASSERT_TRUE(eventually([&] { return service.deeds.size() == 4; }));
    EXPECT_EQ(service.deeds, (std::vector{"70" + me, "toggle" + me, "travel" + me, "90" + me}));
    EXPECT_EQ(service.callers, std::vector(4, name));
    caller.hangUp();
    ASSERT_TRUE(eventually([&] { return !service.left.empty(); }));
    EXPECT_EQ(service.left, std::vector{name});
}

TEST_F(DaemonObjectTest, BoundsWhatItKeepsForACallerItDoesNotKnowYet)
{
    const auto daemon = startDaemon();
    Peer caller(loop);
    constexpr int sent = static_cast<int>(Callers::maximumWaiting) + 8;
    for (int limit = 0; limit < sent; ++limit) caller.send({.customChargeLimit = 1.0 * limit});
    caller.sync(); // all of it now waits in front of the daemon, and the bus has not been asked who it is
    ASSERT_TRUE(eventually([&] { return !service.received.empty(); }));
    EXPECT_EQ(service.received.size(), Callers::maximumWaiting);
    EXPECT_EQ(service.received.front().customChargeLimit, 8);
    EXPECT_EQ(service.received.back().customChargeLimit, sent - 1);
    EXPECT_EQ(log.count("Dropped a message of " + caller.name()), 1U);
}

TEST_F(DaemonObjectTest, DropsTheMessageOfOneWhoLeftBeforeItWasKnown)
{
    const auto daemon = startDaemon();
    Peer caller(loop);
    caller.send({.customChargeLimit = 70});
    caller.sync();
    caller.hangUp();
    ASSERT_TRUE(eventually([&] { return log.count("disconnected before") == 1; }));
    Peer next(loop);
    next.send({.customChargeLimit = 75});
    ASSERT_TRUE(eventually([&] { return !service.deeds.empty(); }));
    EXPECT_EQ(service.deeds, std::vector{"75" + me});
    EXPECT_TRUE(service.left.empty());
}

} // namespace
} // namespace velmora
