// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/DaemonLink.h"

#include "base/Translation.h"
#include "bus/Records.h"
#include "link/Answers.h"
#include "wire/ChargerInterface.h"

#include <algorithm>
#include <cstdint>
#include <system_error>
#include <thread>
#include <utility>

namespace velmora::ctl {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto forever = UINT64_MAX;
constexpr auto settlePatience = 2s;
constexpr auto restTime = 500ms; // longer than the daemon waits for a controller
constexpr auto settleInterval = 100ms;

int keepAnswer(sd_bus_message* reply, void* kept, sd_bus_error*)
{
    static_cast<dbus::Message*>(kept)->reset(sd_bus_message_ref(reply));
    return 1;
}

dbus::Bus openBus(const EventLoop& loop)
try {
    return dbus::openSystemBus(loop);
} catch (const std::system_error& failure) {
    throw Failure(ExitStatus::noDaemon,
                  tr("The system bus cannot be reached: %1.", failure.code().message()));
}

/// Whether the charger holds what it is asked to.
bool holds(const ChargerReport& charger)
{
    if (charger.control == ChargerReport::Control::fixedLimit)
        return charger.fixedLimit.empty() == (charger.wantedEndThreshold >= 100);
    return charger.endThreshold == charger.wantedEndThreshold &&
           (charger.startThreshold < 0 || charger.startThreshold == charger.wantedStartThreshold);
}

/// From the answers to `glanceCalls`.
Snapshot glanceOf(const std::vector<dbus::Message>& replies)
{
    return {.state = HSBatteryState(readRecord(replies[0])),
            .charger = ChargerReport::unarchived(readRecord(replies[1])),
            .settings = unarchivedSettings(readRecord(replies[2]))};
}

} // namespace

DaemonLink::DaemonLink(EventLoop& loop, std::optional<std::chrono::seconds> patience)
    : loop_(loop), patience_(patience), bus_(openBus(loop))
{
}

dbus::Message DaemonLink::call(const char* interface, const char* member, const char* path) const
{
    return dbus::newCall(bus_.get(), wire::serviceName, path, interface, member);
}

std::vector<dbus::Message> DaemonLink::ask(const Calls& calls, std::chrono::seconds patience)
{
    const auto limit = patience_.value_or(patience);
    const auto deadline = Clock::now() + limit + 1s; // the bus itself may hang
    std::vector<dbus::Message> replies(calls.size());
    std::vector<dbus::Slot> pending;
    for (std::size_t i = 0; i < calls.size(); ++i)
        pending.push_back(dbus::ask(bus_.get(), calls[i], keepAnswer, &replies[i],
                                    static_cast<std::uint64_t>(std::chrono::microseconds(limit).count())));
    const auto areAnswered = [&] {
        return std::ranges::none_of(replies, [](const auto& reply) { return !reply; });
    };
    if (!serveUntil(deadline, areAnswered)) throw unansweredFailure();
    return replies;
}

bool DaemonLink::serveUntil(Clock::time_point deadline, const std::function<bool()>& isDone)
{
    while (!isDone()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left <= 0ms) return false;
        loop_.runOnce(left);
    }
    return true;
}

dbus::Message DaemonLink::chargerCall() const
{
    auto question = call("org.freedesktop.DBus.Properties", "GetAll");
    dbus::check(sd_bus_message_append(question.get(), "s", wire::charger::interface), "GetAll");
    return question;
}

DaemonLink::Calls DaemonLink::glanceCalls() const
{
    Calls calls;
    calls.push_back(
        call(wire::daemon_protocol::interface, wire::daemon_protocol::getBatteryState.member().c_str()));
    calls.push_back(chargerCall());
    calls.push_back(call(wire::charger::interface, wire::charger::getSettings.selector));
    return calls;
}

Snapshot DaemonLink::glance()
{
    return glanceOf(ask(glanceCalls(), readPatience));
}

Snapshot DaemonLink::snapshot()
{
    auto calls = glanceCalls();
    calls.push_back(
        call(wire::battery::managerInterface, wire::battery::getManagedObjects, wire::battery::folder));
    calls.push_back(otherProgramsCall(bus_.get()));
    const auto replies = ask(calls, readPatience);
    auto now = glanceOf(replies);
    now.batteries = readBatteries(replies[3]);
    now.others = readOtherPrograms(replies[4]);
    calls.clear();
    for (const auto& battery : now.batteries) calls.push_back(upowerCall(bus_.get(), battery));
    if (std::ranges::any_of(ask(calls, readPatience), doesUPowerLimit)) now.others.emplace_back("UPower");
    return now;
}

ChargerReport DaemonLink::charger()
{
    Calls calls;
    calls.push_back(chargerCall());
    return ChargerReport::unarchived(readRecord(ask(calls, readPatience).front()));
}

ChargerReport DaemonLink::settled(const ChargerReport& before)
{
    const auto deadline = Clock::now() + settlePatience;
    auto lastAction = before.lastActionDate;
    auto lastActionSeen = Clock::now();
    for (;;) {
        auto now = charger();
        if (std::exchange(lastAction, now.lastActionDate) != now.lastActionDate)
            lastActionSeen = Clock::now();
        // A driver that makes something else of it, or an action that was on its way when it was asked.
        const bool isAtRest = lastAction != before.lastActionDate && Clock::now() - lastActionSeen > restTime;
        if (holds(now) || isAtRest || Clock::now() > deadline) return now;
        std::this_thread::sleep_for(settleInterval);
    }
}

std::vector<HSHistorySnapshot> DaemonLink::history()
{
    Calls calls;
    calls.push_back(
        call(wire::daemon_protocol::interface, wire::daemon_protocol::getAnalyticsHistory.member().c_str()));
    std::vector<HSHistorySnapshot> samples;
    for (const auto& record : readRecords(ask(calls, readPatience).front()))
        samples.emplace_back(record, Date{});
    return samples;
}

std::vector<KeyedArchive> DaemonLink::actions()
{
    Calls calls;
    calls.push_back(call(wire::charger::interface, wire::charger::getActions.selector));
    return readRecords(ask(calls, readPatience).front());
}

/// An answer that does not come may be a person who types.
dbus::Message DaemonLink::askToChange(dbus::Message call)
{
    dbus::check(sd_bus_message_set_allow_interactive_authorization(call.get(), true), "interactive");
    Calls wish;
    wish.push_back(std::move(call));
    if (patience_) return std::move(ask(wish, *patience_).front());
    dbus::Message reply;
    const auto pending = dbus::ask(bus_.get(), wish.front(), keepAnswer, &reply, forever);
    while (!serveUntil(Clock::now() + readPatience, [&] { return reply != nullptr; })) {
        if (const auto tell = std::exchange(onLongWait, nullptr)) tell();
        charger(); // throws where nobody is there any more
    }
    return reply;
}

ChargingSettings DaemonLink::change(const KeyedArchive& changes)
{
    auto wish = call(wire::charger::interface, wire::charger::setSettings.selector);
    dbus::append(wish.get(), changes);
    return unarchivedSettings(readRecord(askToChange(std::move(wish))));
}

bool DaemonLink::control(const wire::Message& command)
{
    return readTruth(askToChange(call(wire::charger::interface, command.selector)));
}

} // namespace velmora::ctl
