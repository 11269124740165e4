// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/Answers.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "base/UserName.h"
#include "bus/Records.h"
#include "link/ReadAnswer.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velmora::ctl {

namespace {

constexpr std::size_t maximumBatteries = 32;
constexpr std::size_t maximumName = 64; // bytes
constexpr std::size_t maximumRecords = 100'000;

/// Units of programs that write charge thresholds, some only where they are told to.
constexpr std::array<std::pair<std::string_view, const char*>, 5> otherPrograms{{
    {"tlp.service", "TLP"},
    {"auto-cpufreq.service", "auto-cpufreq"},
    {"laptop-mode.service", "laptop-mode-tools"},
    {"asusd.service", "asusd"},
    {"com.system76.PowerDaemon.service", "system76-power"},
}};

Failure refusal(const std::string& said)
{
    const auto user = localUserName(geteuid());
    return {
        ExitStatus::failed, tr("Refused: %1.", said),
        tr("An administrator may do this: run it again with sudo. Members of the group velmora may without: "
           "sudo usermod -aG velmora %1, from the next log-in on.",
           user.empty() ? "NAME" : user)};
}

/// Not in the bus's own words, which name process and user.
Failure unreachableFailure()
{
    return {ExitStatus::failed, tr("The system bus does not let this user ask the Velmora daemon: "
                                   "app.velmora.daemon.conf, which allows it, may not be installed.")};
}

Failure failureOf(const sd_bus_error& error, std::string_view sender)
{
    const std::string_view name = error.name ? error.name : "";
    if (isAnyOf(name, {SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER}))
        return {ExitStatus::noDaemon, tr("The Velmora daemon is not running. This starts it: sudo systemctl "
                                         "enable --now app.velmora.daemon")};
    if (isAnyOf(name, {SD_BUS_ERROR_NO_REPLY, SD_BUS_ERROR_TIMEOUT, SD_BUS_ERROR_DISCONNECTED}))
        return unansweredFailure();
    const auto said = printable(dbus::textOf(error));
    if (isAnyOf(name, {SD_BUS_ERROR_ACCESS_DENIED, SD_BUS_ERROR_AUTH_FAILED,
                       SD_BUS_ERROR_INTERACTIVE_AUTHORIZATION_REQUIRED}))
        return sender == dbus::busName ? unreachableFailure() : refusal(said);
    return {ExitStatus::failed, tr("The daemon answers: %1.", said)};
}

Failure nonsenseFailure()
{
    return {ExitStatus::failed, tr("The daemon's answer cannot be understood: is it of another version than "
                                   "velmoractl?")};
}

constexpr Respondent daemon{failureOf, nonsenseFailure};

/// The interfaces of one object, of which the batteries' own counts.
void readInterfaces(sd_bus_message* message, std::vector<BatteryReport>& batteries)
{
    enter(message, 'a', "{sa{sv}}");
    while (isEntered(message, 'e', "sa{sv}")) {
        const char* interface = nullptr;
        dbus::check(sd_bus_message_read(message, "s", &interface), "read");
        const auto record = dbus::readArchive(message);
        if (interface == std::string_view(BatteryReport::interface) && batteries.size() < maximumBatteries)
            batteries.push_back(BatteryReport::unarchived(record));
        leave(message);
    }
    leave(message);
}

} // namespace

Failure unansweredFailure()
{
    return {ExitStatus::noDaemon,
            tr("The Velmora daemon does not answer. This tells how it is: systemctl status "
               "app.velmora.daemon")};
}

KeyedArchive readRecord(const dbus::Message& reply)
{
    return readAnswer(daemon, reply, wire::recordType,
                      [](auto* message) { return dbus::readArchive(message); });
}

bool readTruth(const dbus::Message& reply)
{
    return readAnswer(daemon, reply, "b", [](auto* message) {
        int value = 0;
        dbus::check(sd_bus_message_read(message, "b", &value), "read");
        return value != 0;
    });
}

std::vector<KeyedArchive> readRecords(const dbus::Message& reply)
{
    return readAnswer(daemon, reply, wire::recordListType, [](auto* message) {
        std::vector<KeyedArchive> records;
        enter(message, 'a', wire::recordType);
        while (records.size() < maximumRecords &&
               dbus::check(sd_bus_message_at_end(message, false), "read") == 0)
            records.push_back(dbus::readArchive(message));
        return records;
    });
}

std::vector<BatteryReport> readBatteries(const dbus::Message& reply)
{
    const auto* error = sd_bus_message_get_error(reply.get());
    if (error && error->name &&
        isAnyOf(error->name,
                {SD_BUS_ERROR_UNKNOWN_OBJECT, SD_BUS_ERROR_UNKNOWN_METHOD, SD_BUS_ERROR_UNKNOWN_INTERFACE}))
        return {};
    return readAnswer(daemon, reply, wire::battery::objectsType, [](auto* message) {
        std::vector<BatteryReport> batteries;
        enter(message, 'a', "{oa{sa{sv}}}");
        while (isEntered(message, 'e', "oa{sa{sv}}")) {
            dbus::check(sd_bus_message_skip(message, "o"), "skip");
            readInterfaces(message, batteries);
            leave(message);
        }
        return batteries;
    });
}

dbus::Message otherProgramsCall(sd_bus* bus)
{
    constexpr auto service = "org.freedesktop.systemd1";
    auto call = dbus::newCall(bus, service, "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager",
                              "ListUnitsByNames");
    dbus::check(sd_bus_message_open_container(call.get(), 'a', "s"), "open");
    for (const auto& [unit, name] : otherPrograms)
        dbus::check(sd_bus_message_append(call.get(), "s", std::string(unit).c_str()), "append");
    dbus::check(sd_bus_message_close_container(call.get()), "close");
    return call;
}

std::vector<std::string> readOtherPrograms(const dbus::Message& reply)
try {
    return readAnswer(daemon, reply, "a(ssssssouso)", [](auto* message) {
        std::vector<std::string> active;
        enter(message, 'a', "(ssssssouso)");
        while (isEntered(message, 'r', "ssssssouso")) {
            const char* unit = nullptr;
            const char* state = nullptr;
            dbus::check(sd_bus_message_read(message, "ssss", &unit, nullptr, nullptr, &state), "read");
            const auto known = std::ranges::find(otherPrograms, std::string_view(unit),
                                                 &std::pair<std::string_view, const char*>::first);
            if (known != otherPrograms.end() && state == std::string_view("active"))
                active.emplace_back(known->second);
            dbus::check(sd_bus_message_skip(message, "ssouso"), "skip");
            leave(message);
        }
        return active;
    });
} catch (const Failure&) {
    return {}; // another init system, or one that does not answer: nothing of ours hangs on it
}

dbus::Message upowerCall(sd_bus* bus, const BatteryReport& battery)
{
    std::string name = battery.name.value_or("").substr(0, maximumName);
    const auto isPlain = [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= 'a' && letter <= 'z');
    };
    std::ranges::replace_if(name, std::not_fn(isPlain), '_');
    const auto path = "/org/freedesktop/UPower/devices/battery_" + name;
    auto call =
        dbus::newCall(bus, "org.freedesktop.UPower", path.c_str(), "org.freedesktop.DBus.Properties", "Get");
    dbus::check(
        sd_bus_message_append(call.get(), "ss", "org.freedesktop.UPower.Device", "ChargeThresholdEnabled"),
        "append");
    return call;
}

bool doesUPowerLimit(const dbus::Message& reply)
try {
    return readAnswer(daemon, reply, "v", [](auto* message) {
        int isEnabled = 0;
        dbus::check(sd_bus_message_read(message, "v", "b", &isEnabled), "read");
        return isEnabled != 0;
    });
} catch (const Failure&) {
    return false;
}

} // namespace velmora::ctl
