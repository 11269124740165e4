// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "FleetControl.h"

#include "base/SystemClock.h"
#include "base/TerminalSecret.h"
#include "base/Translation.h"
#include "base/Wipe.h"
#include "fleet/EcosystemSync.h"
#include "fleet/FleetArchive.h"
#include "output/FleetView.h"
#include "output/Json.h"
#include "report/FleetMachines.h"
#include "texts/FleetTexts.h"
#include "wire/ModelFace.h"

#include <nlohmann/json.hpp>

namespace velmora::ctl {

namespace {

namespace face = wire::face::fleet;
using Action = FleetRequest::Action;

Failure offFailure()
{
    return {ExitStatus::failed, tr("Ecosystem Sync is off. This turns it on: velmoractl fleet on")};
}

/// Why what was asked for has not come to pass.
Failure problem(const FleetSnapshot& now)
{
    const auto known = fleet::problemText(now.fault, now.place);
    return {ExitStatus::failed, known.empty() ? tr("It was sent, and has not come to pass in time.") : known};
}

bool hasBegun(const FleetSnapshot& now)
{
    return now.lastListDate || now.fault != RecordFault::none;
}

} // namespace

FleetControl::FleetControl(const Request& request) : request_(request), link_(loop_, request.patience) {}

std::string FleetControl::run()
{
    switch (request_.fleet.action) {
    case Action::devices:
        return devices();
    case Action::on:
        return turnOn();
    case Action::off:
        return leave();
    case Action::accept:
        return accept();
    case Action::test:
        return test();
    case Action::limit:
    case Action::autoProtect:
    case Action::storage:
        return command();
    case Action::remove:
        return remove();
    default:
        return told(link_.listed());
    }
}

std::string FleetControl::told(const FleetSnapshot& now) const
{
    return request_.isJson ? jsonText(fleetJson(now)) + '\n' : fleetText(now);
}

/// A script sees from the status that it is done, and asks for what it wants to know.
std::string FleetControl::done(const std::string& sentence) const
{
    return (request_.isJson ? jsonText({{"done", sentence}}) : sentence) + '\n';
}

std::string FleetControl::devices()
{
    const auto now = link_.listed();
    if (!now.isOn) throw offFailure();
    if (now.devices.empty() && now.fault != RecordFault::none) throw problem(now);
    const auto time = SystemClock().now();
    return request_.isJson ? jsonText(devicesJson(now)) + '\n' : devicesText(now, time);
}

/// With a password that is asked for, unless there is a file for it. Where there is no terminal the one that
/// is kept counts.
KeyedArchive FleetControl::placeRecord(const RecordPlace& place) const
{
    auto record = archived(place);
    if (place.kind == RecordPlace::Kind::thisComputer || !place.passwordFile.empty()) return record;
    auto password =
        askSecret(tr("Password of %1 at %2 (empty: the one that is kept): ", place.user, place.host));
    if (!password || password->empty()) return record;
    record.encode(face::place_key::password, *password);
    wipe(*password);
    return record;
}

void FleetControl::expectUsable(const RecordPlace& place, const KeyedArchive& record)
{
    link_.awaited([](const auto& now) { return !now.isTesting; }); // somebody else's
    link_.operate(face::test, record);
    const auto now = link_.awaited([](const auto& at) { return !at.isTesting && at.testResult; });
    const auto found = now.testResult.value_or(RecordFault::slow);
    if (found != RecordFault::none) throw Failure(ExitStatus::failed, fleet::testText(found, place));
}

void FleetControl::take(const RecordPlace& place)
{
    auto record = placeRecord(place);
    expectUsable(place, record);
    link_.operate(face::use, record);
    record.wipe();
    const auto now = link_.awaited([&](const auto& at) { return at.place == place; });
    if (now.place != place) throw problem(now);
}

std::string FleetControl::turnOn()
{
    if (request_.fleet.place) take(*request_.fleet.place);
    if (!link_.snapshot().isOn) link_.operate(face::turnOn);
    link_.awaited(hasBegun);
    const auto now = link_.listed();
    if (now.fault == RecordFault::none) return told(now);
    throw Failure(ExitStatus::failed, tr("Ecosystem Sync is on. %1", problem(now).what()));
}

std::string FleetControl::leave()
{
    link_.operate(face::leave);
    const auto now = link_.awaited([](const auto& at) { return !at.isLeaving; });
    if (now.isLeaving || now.isRecordLeft)
        throw Failure(ExitStatus::failed, tr("Ecosystem Sync is off. %1", fleet::recordLeftText()));
    return done(tr("Ecosystem Sync is off: this machine has left the fleet."));
}

std::string FleetControl::accept()
{
    link_.setAcceptsCommands(request_.fleet.isOn);
    return done(request_.fleet.isOn ? tr("This machine takes commands of the others.")
                                    : tr("This machine takes no commands of the others."));
}

std::string FleetControl::test()
{
    const auto kept = link_.snapshot().place;
    const auto place = request_.fleet.place.value_or(kept);
    // The one that is in use has its password.
    auto record = request_.fleet.place ? placeRecord(place) : archived(place);
    expectUsable(place, record);
    record.wipe();
    return done(fleet::testText(RecordFault::none, place));
}

std::string FleetControl::command()
{
    const auto before = link_.listed();
    if (!before.isOn) throw offFailure();
    const auto device = otherMachine(before, request_.fleet.device);
    const auto now = SystemClock().now();
    const auto wanted = commandFor(device, request_.fleet, now);
    link_.operate(face::command, archived(wanted));
    const auto after = link_.awaitedListing([&](const auto& at) { return isCommanded(at, device, wanted); });
    if (!isCommanded(after, device, wanted)) throw problem(after);
    const auto said = tr("%1 takes that over within a minute, while it is awake.", fleet::nameOf(device));
    const auto kept = request_.fleet.action == Action::limit ? "" : fleet::lowLimitText(device);
    return done(kept.empty() ? said : tr("%1 %2", said, kept));
}

std::string FleetControl::remove()
{
    const auto before = link_.listed();
    if (!before.isOn) throw offFailure();
    const auto device = otherMachine(before, request_.fleet.device);
    if (!device.isSilent(SystemClock().now()))
        throw Failure(ExitStatus::unable,
                      tr("%1 was heard of in the last ten minutes, and would only come back: "
                         "turn Ecosystem Sync off there.",
                         fleet::nameOf(device)));
    KeyedArchive record;
    record.encode(face::device_key::deviceID, device.state.deviceID.value_or(""));
    link_.operate(face::removeDevice, record);
    const auto isGone = [&](const auto& at) { return !isListed(at, device); };
    const auto after = link_.awaitedListing(isGone);
    if (!isGone(after)) throw problem(after);
    return done(tr("%1 is forgotten.", fleet::nameOf(device)));
}

} // namespace velmora::ctl
