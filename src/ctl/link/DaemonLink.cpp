// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/DaemonLink.h"

#include "base/Translation.h"
#include "bus/Records.h"
#include "link/Answers.h"
#include "wire/ChargerInterface.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

namespace velmora::ctl {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto settlePatience = 2s;
constexpr auto restTime = 500ms; // longer than the daemon waits for a controller
constexpr auto settleInterval = 100ms;

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
    : asker_(loop, openBus(loop), patience, unansweredFailure())
{
}

dbus::Message DaemonLink::call(const char* interface, const char* member, const char* path) const
{
    return dbus::newCall(asker_.bus(), wire::serviceName, path, interface, member);
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
    return glanceOf(asker_.ask(glanceCalls(), readPatience));
}

Snapshot DaemonLink::snapshot()
{
    auto calls = glanceCalls();
    calls.push_back(
        call(wire::battery::managerInterface, wire::battery::getManagedObjects, wire::battery::folder));
    calls.push_back(otherProgramsCall(asker_.bus()));
    const auto replies = asker_.ask(calls, readPatience);
    auto now = glanceOf(replies);
    now.batteries = readBatteries(replies[3]);
    now.others = readOtherPrograms(replies[4]);
    calls.clear();
    for (const auto& battery : now.batteries) calls.push_back(upowerCall(asker_.bus(), battery));
    if (std::ranges::any_of(asker_.ask(calls, readPatience), doesUPowerLimit))
        now.others.emplace_back("UPower");
    return now;
}

ChargerReport DaemonLink::charger()
{
    Calls calls;
    calls.push_back(chargerCall());
    return ChargerReport::unarchived(readRecord(asker_.ask(calls, readPatience).front()));
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
    for (const auto& record : readRecords(asker_.ask(calls, readPatience).front()))
        samples.emplace_back(record, Date{});
    return samples;
}

std::vector<KeyedArchive> DaemonLink::actions()
{
    Calls calls;
    calls.push_back(call(wire::charger::interface, wire::charger::getActions.selector));
    return readRecords(asker_.ask(calls, readPatience).front());
}

/// An answer that does not come may be a person who types.
dbus::Message DaemonLink::askToChange(dbus::Message call)
{
    dbus::check(sd_bus_message_set_allow_interactive_authorization(call.get(), true), "interactive");
    if (asker_.patience()) return asker_.ask(std::move(call));
    return asker_.askForever(call, [this] {
        if (const auto tell = std::exchange(onLongWait, nullptr)) tell();
        charger(); // throws where nobody is there any more
    });
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
