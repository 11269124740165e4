// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FakePlatform.h"
#include "alerts/CalendarConsent.h"
#include "alerts/TravelCharge.h"

#include <gtest/gtest.h>
#include <thread>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using Authorization = CalendarStore::Authorization;

CalendarEvent eventIn(double hours, const std::string& title, const std::string& location = "")
{
    const Date start = ManualClock::start + hours * duration::hour;
    return {.identifier = title, .title = title, .location = location, .start = start, .end = start + 3600};
}

struct TravelTest : testing::Test {
    FakePlatform machine;
    FakeCalendarStore& store = *machine.calendarStore;
    CalendarContextManager& calendar = CalendarContextManager::shared();

    void pass(std::chrono::minutes time)
    {
        // In steps, so that the queue works between the timers.
        for (; time > 0min; time -= 1min) {
            machine.loop->advance(1min);
            machine.settle();
        }
    }
    void scan()
    {
        calendar.checkSoon();
        machine.settle();
    }
};

TEST_F(TravelTest, TitlesAndPlacesTellOfTravel)
{
    const std::pair<CalendarEvent, bool> cases[] = {
        {eventIn(20, "Flight to Lisbon"), true},
        {eventIn(25, "Flight to Lisbon"), false},
        {eventIn(3, "", "Airport Terminal 2"), true},
        {eventIn(3, "Gateway meeting"), false},
        {eventIn(3, "At the gate"), true}, // the blank between title and place
        {eventIn(3, "Gate B12 boarding"), true},
        {eventIn(3, "VACATION"), true},
        {eventIn(-0.5, "Hotel"), true}, // under way
        {eventIn(3, "Dentist", "Main street"), false},
    };
    calendar.requestAccess();
    machine.settle();
    for (const auto& [event, isTravel] : cases) {
        SCOPED_TRACE(*event.title);
        store.calendar = {eventIn(1, "Lunch"), event};
        EXPECT_EQ(calendar.checkNow(), isTravel);
        machine.settle();
        EXPECT_EQ(calendar.isTravelDayDetected.get(), isTravel);
        EXPECT_EQ(calendar.detectedEventTitle.get(), isTravel ? event.title : std::nullopt);
    }
    store.calendar = {eventIn(2, "x", "Hotel"), eventIn(3, "Trip")};
    store.calendar.front().title.reset();
    EXPECT_TRUE(calendar.checkNow());
    machine.settle();
    EXPECT_EQ(calendar.detectedEventTitle.get(), std::nullopt) << "the first wins, with a title or without";
    EXPECT_EQ(machine.log->count("CalendarContext: travel day detected — \"unknown\""), 1U);
    EXPECT_EQ(machine.log->count("CalendarContext: travel day detected — \"Flight to Lisbon\""), 1U);
}

TEST_F(TravelTest, WithoutAccessNothingIsReadAndNothingChanges)
{
    store.calendar = {eventIn(2, "Trip")};
    EXPECT_FALSE(calendar.checkNow());
    store.answer = Authorization::denied;
    calendar.requestAccess();
    machine.settle();
    EXPECT_EQ(machine.log->count("CalendarContext: access denied by user"), 1U);
    store.answer = Authorization::restricted;
    store.error = "no calendar";
    calendar.requestAccess();
    machine.settle();
    EXPECT_EQ(machine.log->count("CalendarContext: access request failed — no calendar"), 1U);
    EXPECT_EQ(store.readings, 0);
    EXPECT_EQ(machine.loop->pendingTimers(), 0U);

    store.answer = Authorization::fullAccess;
    store.error.reset();
    calendar.requestAccess();
    machine.settle();
    EXPECT_EQ(machine.log->count("CalendarContext: access granted"), 1U);
    EXPECT_TRUE(calendar.isTravelDayDetected.get());
    store.isBroken = true;
    scan();
    EXPECT_TRUE(calendar.isTravelDayDetected.get()) << "what cannot be read says nothing";
    EXPECT_FALSE(calendar.isLastScanWhole.get());
}

TEST_F(TravelTest, ScansComeEachHalfHourAndEndWithTheConsent)
{
    machine.preferences->set(preference_key::isCalendarConsentGiven, true);
    store.answer = Authorization::restricted;
    CalendarConsent consent(calendar);
    pass(29min);
    EXPECT_FALSE(calendar.calendarAccessGranted.get());
    pass(61min);
    EXPECT_EQ(machine.log->count("CalendarContext: access denied by user"), 1U) << "none is still none";
    store.answer = Authorization::fullAccess; // a calendar is made, which only asking tells
    pass(30min);
    EXPECT_TRUE(calendar.calendarAccessGranted.get()) << "one that comes later is found";
    EXPECT_EQ(store.readings, 1);
    pass(90min);
    EXPECT_EQ(store.readings, 4);

    for (const auto next : {Authorization::restricted, Authorization::fullAccess}) { // the folder goes, comes
        store.answer = next;
        store.requestFullAccess([](bool, const auto&) {});
        pass(60min);
        EXPECT_EQ(calendar.calendarAccessGranted.get(), next == Authorization::fullAccess);
        EXPECT_FALSE(calendar.isTravelDayDetected.get() && next == Authorization::restricted);
        store.calendar = {eventIn(8, "Trip")};
    }
    pass(30min);
    EXPECT_TRUE(calendar.isTravelDayDetected.get());
    calendar.checkSoon();
    consent.isGiven.set(false); // while a scan waits
    machine.settle();
    EXPECT_FALSE(calendar.isTravelDayDetected.get());
    EXPECT_EQ(calendar.detectedEventTitle.get(), std::nullopt);
    const int readings = store.readings;
    pass(120min);
    EXPECT_EQ(store.readings, readings);
    EXPECT_EQ(machine.loop->pendingTimers(), 0U);
    EXPECT_FALSE(machine.preferences->boolean(preference_key::isCalendarConsentGiven));
    consent.isGiven.set(true);
    machine.settle();
    EXPECT_TRUE(calendar.isTravelDayDetected.get());
}

TEST_F(TravelTest, AScanThatOutlivesTheConsentIsNotTold)
{
    store.calendar = {eventIn(4, "Trip")};
    calendar.requestAccess();
    machine.queue("velmora-calendar")->run();
    machine.loop->runPosted();
    std::jthread([this] { calendar.checkNow(); }).join();
    calendar.endAccess();
    machine.settle();
    EXPECT_FALSE(calendar.isTravelDayDetected.get());
}

struct TravelChargeTest : TravelTest {
    std::optional<TravelCharge::Charger> charger{{.isOnMains = true, .percentage = 80}};
    int begun = 0;
    int takenBack = 0;
    bool isAllowed = true;
    std::optional<TravelCharge> travel;

    void SetUp() override
    {
        machine.preferences->set(preference_key::isTravelChargeOn, true);
        start();
        calendar.requestAccess();
        machine.settle();
    }
    void start()
    {
        travel.emplace(calendar, TravelCharge::Hands{.look = [this] { return charger; },
                                                     .begin =
                                                         [this](const auto& answer) {
                                                             ++begun;
                                                             charger->isQuickChargeOn = isAllowed;
                                                             answer(isAllowed);
                                                         },
                                                     .takeBack = [this] { ++takenBack; }});
    }
    void become(TravelCharge::Charger next)
    {
        charger = next;
        travel->chargerChanged();
        machine.settle();
    }
    void put(std::vector<CalendarEvent> events)
    {
        store.calendar = std::move(events);
        scan();
    }
    auto notices() const { return machine.notificationCenter->delivered(); }
};

TEST_F(TravelChargeTest, BeginsTenHoursBeforeAnEventAndTheEveningBeforeADay)
{
    put({eventIn(12, "Flight")});
    EXPECT_EQ(travel->stage.get(), "scheduled");
    EXPECT_EQ(travel->begins.get(), ManualClock::start + 2 * duration::hour);
    pass(119min);
    EXPECT_EQ(begun, 0);
    pass(2min);
    EXPECT_EQ(begun, 1);
    EXPECT_EQ(notices(), 1);
    EXPECT_EQ(travel->stage.get(), "begun");
    EXPECT_EQ(travel->begins.get(), std::nullopt);
    become({.isOnMains = true, .percentage = 85});
    pass(300min);
    EXPECT_EQ(begun, 1) << "once an event, though its charge was taken back";
    EXPECT_EQ(travel->stage.get(), "over");

    auto day = eventIn(24, "Vacation"); // five hours are over, this is in 19
    day.isAllDay = true;
    put({day});
    EXPECT_EQ(travel->begins.get(), ManualClock::start + 20 * duration::hour);
    pass(16 * 60min);
    EXPECT_EQ(begun, 2);
}

TEST_F(TravelChargeTest, WaitsForWhatIsInItsWayUntilTheEventBegins)
{
    become({.isOnMains = false, .percentage = 80});
    put({eventIn(3, "Flight")});
    EXPECT_EQ(travel->stage.get(), "unplugged");
    become({.isOnMains = true, .percentage = 80, .pause = TravelCharge::Pause::person});
    EXPECT_EQ(travel->stage.get(), "paused");
    become({.isOnMains = true, .percentage = 80, .pause = TravelCharge::Pause::heat});
    EXPECT_EQ(travel->stage.get(), "hot");
    become({.isOnMains = true, .percentage = 100});
    EXPECT_EQ(travel->stage.get(), "full");
    charger.reset();
    travel->chargerChanged();
    machine.settle();
    EXPECT_EQ(travel->stage.get(), "refused");
    EXPECT_EQ(begun, 0);
    isAllowed = false;
    become({.isOnMains = true, .percentage = 80});
    for (int push = 0; push < 10; ++push) become(*charger);
    EXPECT_EQ(begun, 1) << "a refusal is not argued with";
    EXPECT_EQ(notices(), 0);
    isAllowed = true;
    charger.reset(); // another daemon
    travel->chargerChanged();
    machine.settle();
    become({.isOnMains = true, .percentage = 80});
    EXPECT_EQ(begun, 2);
    EXPECT_EQ(notices(), 1);

    become({.isOnMains = false, .percentage = 80});
    put({eventIn(2, "Trip")});
    pass(119min);
    EXPECT_EQ(travel->stage.get(), "unplugged");
    pass(2min);
    become({.isOnMains = true, .percentage = 80});
    scan();
    EXPECT_EQ(travel->stage.get(), "none") << "it has begun";
    EXPECT_EQ(begun, 2);
}

TEST_F(TravelChargeTest, APersonsQuickChargeIsLeftAlone)
{
    become({.isOnMains = true, .percentage = 60, .isQuickChargeOn = true});
    put({eventIn(5, "Flight")});
    EXPECT_EQ(travel->stage.get(), "quick charge");
    become({.isOnMains = true, .percentage = 60}); // taken back
    EXPECT_EQ(begun, 0) << "nobody is overruled";
    EXPECT_EQ(travel->stage.get(), "over");
    put({eventIn(5, "Hotel")});
    EXPECT_EQ(begun, 1);
    EXPECT_EQ(notices(), 1);
    become({.isOnMains = true, .percentage = 60});
    become({.isOnMains = true, .percentage = 60, .isQuickChargeOn = true});
    const auto notice = machine.notificationCenter->standing().at(0);
    machine.notificationCenter->responses.emit({notice.identifier, NotificationManager::cancelTravelCharge});
    EXPECT_EQ(takenBack, 0) << "the notice was about another";
}

TEST_F(TravelChargeTest, WhatHasBegunIsRememberedOverARestart)
{
    put({eventIn(3, "Flight"), eventIn(5, "Hotel")});
    EXPECT_EQ(begun, 1) << "one charge for both";
    become({.isOnMains = true, .percentage = 80});
    start();
    scan();
    EXPECT_EQ(begun, 1);
    put({eventIn(4, "Flight"), eventIn(5, "Hotel")});
    EXPECT_EQ(begun, 1) << "a flight is late";
    put({eventIn(4, "Another flight")});
    EXPECT_EQ(begun, 2);

    become({.isOnMains = true, .percentage = 80});
    for (int i = 0; i < 100; ++i) {
        put({eventIn(3 + i / 100.0, "Trip " + std::to_string(i))});
        become({.isOnMains = true, .percentage = 80});
    }
    EXPECT_LT(machine.preferences->text(preference_key::travelCharges).size(), 64U * 40);
    machine.preferences->setText(preference_key::travelCharges, ",,=@;x," + std::string(100'000, ','));
    start();
    scan();
    EXPECT_EQ(travel->stage.get(), "begun");
}

TEST_F(TravelChargeTest, IsOffUntilSwitchedOnAndTakenBackByItsNotice)
{
    travel->isEnabled.set(false);
    put({eventIn(3, "Flight")});
    EXPECT_EQ(travel->stage.get(), "none");
    EXPECT_TRUE(calendar.isTravelDayDetected.get());
    travel->isEnabled.set(true);
    machine.settle();
    EXPECT_EQ(begun, 1);
    const auto notice = machine.notificationCenter->standing().at(0);
    ASSERT_EQ(notice.actions.size(), 1U);
    machine.notificationCenter->responses.emit({notice.identifier, NotificationResponse::click});
    EXPECT_EQ(takenBack, 0);
    machine.notificationCenter->responses.emit({notice.identifier, notice.actions[0].identifier});
    EXPECT_EQ(takenBack, 1);
    become({.isOnMains = true, .percentage = 80});
    machine.notificationCenter->responses.emit({notice.identifier, notice.actions[0].identifier});
    EXPECT_EQ(takenBack, 1) << "there is nothing left to take back";
}

} // namespace
} // namespace velmora
