// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/FleetTexts.h"

#include "base/Saturate.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "fleet/EcosystemSync.h"
#include "texts/PanelTexts.h"

#include <algorithm>
#include <array>

namespace velmora::fleet {

namespace {

constexpr double freshness = 300; ///< seconds for which a command may be taken over
constexpr double minute = 60, hour = 60 * minute, day = 24 * hour;

enum class CommandState { none, underWay, taken, overruled, missed };

bool isHandedBack(const DeviceReport& device)
{
    // Whoever changes something at the machine itself has the machine write it over the command.
    return device.commandOrigin && device.commandOrigin->ends_with("(" + device.state.id() + ")");
}

bool isSettable(double limit)
{
    return limit >= DeviceReport::lowestLimit && limit <= DeviceReport::highestLimit;
}

/// A limit that no command can set is passed over there.
bool isAsCommanded(const DeviceReport& device)
{
    const auto& is = *device.inForce;
    const auto& wanted = device.state;
    const auto limit = wanted.remoteChargeLimit.value_or(is.limit);
    return (limit == is.limit || !isSettable(limit)) && wanted.remoteAppleMode == is.isAutoProtectOn &&
           wanted.isStorageModeEnabled.value_or(is.isStorageModeOn) == is.isStorageModeOn;
}

CommandState commandState(const DeviceReport& device, Date now)
{
    using enum velmora::fleet::CommandState;
    const auto& given = device.state.commandTimestamp;
    if (!given) return none;
    if (isHandedBack(device)) return overruled;
    const auto last = device.inForce ? device.inForce->commandTaken : std::nullopt;
    if (last && !(*last < *given)) return isAsCommanded(device) ? taken : overruled;
    return now - *given < freshness ? underWay : missed;
}

std::string onOff(bool isOn)
{
    return isOn ? tr("on") : tr("off");
}

std::string agoText(double seconds)
{
    if (!(seconds >= 2 * minute)) return tr("just now"); // a clock may be ahead of another
    if (seconds < hour) return trn("%1 minute ago", "%1 minutes ago", truncated(seconds / minute));
    if (seconds < day) return trn("%1 hour ago", "%1 hours ago", truncated(seconds / hour));
    return trn("%1 day ago", "%1 days ago", truncated(seconds / day));
}

std::string silenceText(double seconds)
{
    if (seconds < hour)
        return trn("not heard of for %1 minute", "not heard of for %1 minutes", truncated(seconds / minute));
    if (seconds < day)
        return trn("not heard of for %1 hour", "not heard of for %1 hours", truncated(seconds / hour));
    return trn("not heard of for %1 day", "not heard of for %1 days", truncated(seconds / day));
}

std::string ageText(const DeviceReport& device, Date now)
{
    if (!device.lastUpdate) return tr("not heard of yet");
    const double seconds = now - *device.lastUpdate;
    if (!device.isSilent(now)) return agoText(seconds);
    return seconds > 0 ? silenceText(seconds) : tr("heard of at an unknown time, as its clock is ahead");
}

/// Of those that lie with the server or with the way to it; English, in the order of the faults.
constexpr std::array problems{
    trMark(""),
    trMark("The part of Velmora that speaks to servers is missing: install the package velmora-postgresql."),
    trMark("No password is kept for this server, or the secret store is locked: unlock it, or enter the "
           "password here."),
    trMark("There is no host of that name: look at its spelling, and at this computer's network."),
    trMark("The server does not answer: is it switched on, and is there a firewall in between?"),
    trMark("Nobody listens there: is PostgreSQL running, and is the port right?"),
    trMark("The server offers no encryption, so nothing is sent to it: its administrator has to switch TLS "
           "on."),
    trMark("The server's certificate is not one that this computer trusts, or is for another name: give the "
           "name in the certificate as host, or trust by the password."),
    trMark("The server cannot prove that it knows the password, or somebody listens in between: nothing is "
           "sent to it."),
    trMark("User or password is wrong."),
    trMark("There is no database of that name on the server."),
    trMark("The server is not set up for Velmora: its administrator runs \"velmora-fleet-server setup\"."),
    trMark("That user may not use Velmora's records: the server's administrator runs \"velmora-fleet-server "
           "add\"."),
    trMark(
        "That user may read everybody's records: have the administrator make one by \"velmora-fleet-server "
        "add\"."),
    trMark("The server has no room for another connection now: Velmora tries again each minute."),
    trMark("The disk that holds the records is full."),
    trMark("The answer took too long: Velmora tries again each minute."),
    trMark("The file of the records cannot be opened or written: Velmora's log says why."),
    trMark("The records cannot be used: Velmora's log says why."),
};
static_assert(problems.size() == recordFaultTexts.size());

} // namespace

std::string placeText(const RecordPlace& place)
{
    if (place.kind == RecordPlace::Kind::thisComputer)
        return tr("The records are in a file on this computer, which no other machine sees.");
    return tr("The records are on the server %1, in the database %2 of the user %3.", printable(place.host),
              printable(place.database), printable(place.user));
}

std::string missingText(const RecordPlace& place)
{
    if (EcosystemSync::isComplete(place)) return {};
    if (place.host.empty()) return tr("A server needs the name or address of its host.");
    if (place.user.empty()) return tr("A server needs the name of a user.");
    if (place.database.empty()) return tr("A server needs the name of a database.");
    if (place.port == 0) return tr("The port is a number from 1 to 65535.");
    return tr("Host, database, user and file take letters, digits and signs without blanks.");
}

std::string problemText(RecordFault fault, const RecordPlace& place)
{
    if (fault == RecordFault::noPassword && !place.passwordFile.empty())
        return tr(
            "The password file %1 cannot be used: it has to be there, yours alone (mode 0600), and hold "
            "the password in one line.",
            printable(place.passwordFile));
    if (fault == RecordFault::noModule && place.kind == RecordPlace::Kind::thisComputer)
        return tr("The part of Velmora that keeps records on this computer is missing: install the package "
                  "velmora-session anew.");
    return fault == RecordFault::none ? std::string() : tr(problems.at(static_cast<std::size_t>(fault)));
}

std::string testText(RecordFault found, const RecordPlace& place)
{
    return found == RecordFault::none ? tr("It works: a record was saved, read and removed.")
                                      : problemText(found, place);
}

std::string recordLeftText()
{
    return tr("This machine's record could not be removed and stays where it was: your other machines can "
              "remove it once it has been silent for ten minutes.");
}

std::string listEndText(std::size_t listed)
{
    if (listed < CloudDatabase::maximumResults) return {};
    return tr("Only the first %1 machines are listed.", std::to_string(CloudDatabase::maximumResults));
}

std::string nameOf(const DeviceReport& device, bool isThisMachine)
{
    const auto told = trimmed(printable(device.state.deviceName.value_or("")));
    const auto name = told.empty() ? tr("Unnamed machine") : told;
    return isThisMachine ? tr("%1 (this machine)", name) : name;
}

std::string statusText(const DeviceReport& device, Date now)
{
    const auto charging = device.state.isCharging ? tr("Charging") : tr("Not charging");
    const auto heat = ThermalMonitorService::thermalStateFromRawValue(device.state.thermalState.value_or(""));
    if (!heat) return tr("%1, %2", charging, ageText(device, now));
    return tr("%1, heat: %2, %3", charging, panel::thermalText(*heat), ageText(device, now));
}

namespace {

std::string settingsText(double limit, bool isAutoProtectOn, bool isStorageModeOn)
{
    return tr("Limit %1, Auto-Protect %2, storage mode %3", panel::percentageText(limit),
              onOff(isAutoProtectOn), onOff(isStorageModeOn));
}

} // namespace

std::string inForceText(const DeviceReport& device)
{
    const auto& is = device.inForce;
    return is ? settingsText(is->limit, is->isAutoProtectOn, is->isStorageModeOn) : std::string();
}

std::string obstacleText(const DeviceReport& device)
{
    if (!device.inForce) return tr("That machine has not said yet what is in force there.");
    if (!device.inForce->acceptsCommands)
        return tr(
            "That machine takes no commands: its owner has switched them off or may not change the charger "
            "there, or nothing there holds it.");
    return {};
}

FleetCommand suggested(const DeviceReport& device, Date now)
{
    const auto is = device.inForce.value_or(SettingsInForce{});
    FleetCommand command{.deviceID = device.state.id(),
                         .limit = is.limit,
                         .isAutoProtectOn = is.isAutoProtectOn,
                         .isStorageModeOn = is.isStorageModeOn};
    if (commandState(device, now) == CommandState::underWay) {
        const auto onItsWay = device.state.remoteChargeLimit.value_or(is.limit);
        if (device.takesLimit(onItsWay)) command.limit = onItsWay;
        command.isAutoProtectOn = device.state.remoteAppleMode.value_or(is.isAutoProtectOn);
        command.isStorageModeOn = device.state.isStorageModeEnabled.value_or(is.isStorageModeOn);
    }
    if (!device.takesLimit(command.limit))
        command.limit = std::clamp(command.limit, DeviceReport::lowestLimit, DeviceReport::highestLimit);
    return command;
}

std::string lowLimitText(const DeviceReport& device)
{
    if (!device.inForce || isSettable(device.inForce->limit) || !device.takesLimit(device.inForce->limit))
        return {};
    return tr("The limit of %1 there stays as it is unless you choose another, of 50% to 100%.",
              panel::percentageText(device.inForce->limit));
}

std::string commandText(const DeviceReport& device, Date now)
{
    const auto state = commandState(device, now);
    if (state == CommandState::none) return {};
    const auto& wanted = device.state;
    const auto what =
        settingsText(wanted.remoteChargeLimit.value_or(0), wanted.remoteAppleMode.value_or(false),
                     wanted.isStorageModeEnabled.value_or(false));
    const auto ago = agoText(now - *wanted.commandTimestamp);
    switch (state) {
    case CommandState::underWay:
        return tr("%1: sent %2. That machine looks once a minute.", what, ago);
    case CommandState::taken:
        return tr("%1: sent %2, and taken over there.", what, ago);
    case CommandState::overruled:
        return isHandedBack(device) ? tr("Set at that machine itself %1.", ago)
                                    : tr("%1: sent %2, and changed at that machine since.", what, ago);
    default:
        return tr("%1: sent %2, and not picked up within five minutes. Send it again once that machine runs.",
                  what, ago);
    }
}

} // namespace velmora::fleet
