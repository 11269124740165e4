// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/FleetLink.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "bus/Records.h"
#include "fleet/FleetArchive.h"
#include "link/ReadAnswer.h"
#include "wire/ModelFace.h"

#include <cmath>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

namespace velmora::ctl {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

namespace face = wire::face::fleet;

constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr auto lookInterval = 100ms;
constexpr auto listInterval = 500ms;

Failure absentFailure()
{
    return {ExitStatus::noDaemon,
            tr("Velmora does not run in this session: it is what takes part in the fleet. This starts it: "
               "velmora --background, or without a desktop systemctl --user enable --now velmora")};
}

Failure unansweredFailure()
{
    return {ExitStatus::noDaemon, tr("Velmora does not answer in this session.")};
}

Failure nonsenseFailure()
{
    return {ExitStatus::failed,
            tr("Velmora's answer cannot be understood: is it of another version than velmoractl? This "
               "starts it anew: velmora --quit, then velmora --background")};
}

Failure failureOf(const sd_bus_error& error, std::string_view)
{
    const std::string_view name = error.name ? error.name : "";
    if (isAnyOf(name, {SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER})) return absentFailure();
    if (isAnyOf(name, {SD_BUS_ERROR_NO_REPLY, SD_BUS_ERROR_TIMEOUT, SD_BUS_ERROR_DISCONNECTED}))
        return unansweredFailure();
    if (isAnyOf(name, {SD_BUS_ERROR_UNKNOWN_OBJECT, SD_BUS_ERROR_UNKNOWN_INTERFACE,
                       SD_BUS_ERROR_UNKNOWN_METHOD, SD_BUS_ERROR_UNKNOWN_PROPERTY}))
        return nonsenseFailure();
    return {ExitStatus::failed, tr("Velmora answers: %1.", printable(dbus::textOf(error)))};
}

constexpr Respondent velmora{failureOf, nonsenseFailure};

dbus::Bus openBus(const EventLoop& loop)
try {
    return dbus::openSessionBus(loop);
} catch (const std::system_error& failure) {
    throw Failure(
        ExitStatus::noDaemon,
        tr("The session bus cannot be reached: %1. A fleet is a user's: this is for the user who is "
           "logged in, without sudo.",
           failure.code().message()));
}

std::optional<Date> readDate(sd_bus_message* message)
{
    std::optional<Date> date;
    enter(message, 'a', "d");
    double seconds = 0;
    while (dbus::check(sd_bus_message_read_basic(message, 'd', &seconds), "read") > 0) {
        if (std::isfinite(seconds)) date = Date{seconds};
    }
    leave(message);
    return date;
}

std::optional<RecordFault> readFault(sd_bus_message* message)
{
    std::optional<RecordFault> fault;
    enter(message, 'a', "s");
    const char* text = nullptr;
    while (dbus::check(sd_bus_message_read_basic(message, 's', &text), "read") > 0) fault = faultOf(text);
    leave(message);
    return fault;
}

RecordPlace readPlace(sd_bus_message* message)
try {
    return recordPlaceOf(dbus::readArchive(message));
} catch (const std::invalid_argument&) {
    throw nonsenseFailure();
}

std::vector<DeviceReport> readDevices(sd_bus_message* message)
{
    std::vector<DeviceReport> devices;
    enter(message, 'a', wire::recordType);
    while (dbus::check(sd_bus_message_at_end(message, false), "look") == 0) {
        auto device = deviceReportOf(dbus::readArchive(message));
        if (devices.size() < CloudDatabase::maximumResults) devices.push_back(std::move(device));
    }
    leave(message);
    return devices;
}

bool readTruth(sd_bus_message* message)
{
    int value = 0;
    dbus::check(sd_bus_message_read_basic(message, 'b', &value), "read");
    return value != 0;
}

std::string readText(sd_bus_message* message)
{
    const char* text = nullptr;
    dbus::check(sd_bus_message_read_basic(message, 's', &text), "read");
    return std::string(text).substr(0, dbus::maximumTextBytes);
}

/// Reads the value of one property, of whose type the variant has been found to be.
void readValue(sd_bus_message* message, std::string_view name, FleetSnapshot& now)
{
    if (name == face::isOn) now.isOn = readTruth(message);
    if (name == face::acceptsCommands) now.acceptsCommands = readTruth(message);
    if (name == face::isLeaving) now.isLeaving = readTruth(message);
    if (name == face::isRecordLeft) now.isRecordLeft = readTruth(message);
    if (name == face::isTesting) now.isTesting = readTruth(message);
    if (name == face::place) now.place = readPlace(message);
    if (name == face::deviceID) now.deviceID = readText(message);
    if (name == face::deviceName) now.deviceName = readText(message);
    if (name == face::fault) now.fault = faultOf(readText(message));
    if (name == face::testResult) now.testResult = readFault(message);
    if (name == face::lastSyncDate) now.lastSyncDate = readDate(message);
    if (name == face::lastListDate) now.lastListDate = readDate(message);
    if (name == face::devices) now.devices = readDevices(message);
}

void readProperty(sd_bus_message* message, FleetSnapshot& now)
{
    const char* name = nullptr;
    const char* type = nullptr;
    dbus::check(sd_bus_message_read_basic(message, 's', &name), "read");
    dbus::check(sd_bus_message_peek_type(message, nullptr, &type), "look at a value");
    const auto* declared = std::ranges::find_if(
        face::properties, [=](const auto& one) { return one.name == std::string_view(name); });
    if (declared == face::properties.end()) {
        dbus::check(sd_bus_message_skip(message, "v"), "skip a value");
        return;
    }
    if (!type || declared->type != std::string_view(type)) throw nonsenseFailure();
    enter(message, 'v', type);
    readValue(message, name, now);
    leave(message);
}

} // namespace

FleetSnapshot readFleet(const dbus::Message& reply)
{
    return readAnswer(velmora, reply, wire::recordType, [](auto* message) {
        FleetSnapshot now;
        enter(message, 'a', "{sv}");
        while (isEntered(message, 'e', "sv")) {
            readProperty(message, now);
            leave(message);
        }
        leave(message);
        return now;
    });
}

FleetLink::FleetLink(EventLoop& loop, std::optional<std::chrono::seconds> patience)
    : asker_(loop, openBus(loop), patience, unansweredFailure())
{
}

dbus::Message FleetLink::call(const char* interface, const char* member) const
{
    return dbus::newCall(asker_.bus(), wire::face::serviceName, face::objectPath, interface, member);
}

FleetSnapshot FleetLink::snapshot()
{
    auto question = call(propertiesInterface, "GetAll");
    dbus::check(sd_bus_message_append(question.get(), "s", face::interface), "GetAll");
    return readFleet(asker_.ask(std::move(question)));
}

FleetSnapshot FleetLink::listed()
{
    auto before = snapshot();
    if (!before.isOn) return before;
    operate(face::refresh);
    return awaited([&](const auto& now) { return now.lastListDate != before.lastListDate; });
}

void FleetLink::expectDone(dbus::Message call)
{
    readAnswer(velmora, asker_.ask(std::move(call)), "", [](auto*) { return true; });
}

void FleetLink::operate(const char* operation)
{
    expectDone(call(face::interface, operation));
}

void FleetLink::operate(const char* operation, KeyedArchive record)
{
    auto wish = call(face::interface, operation);
    dbus::check(sd_bus_message_sensitive(wish.get()), "sensitive");
    dbus::append(wish.get(), record);
    record.wipe();
    expectDone(std::move(wish));
}

void FleetLink::setAcceptsCommands(bool areAccepted)
{
    auto wish = call(propertiesInterface, "Set");
    dbus::check(sd_bus_message_append(wish.get(), "ssv", face::interface, face::acceptsCommands, "b",
                                      static_cast<int>(areAccepted)),
                "Set");
    expectDone(std::move(wish));
}

FleetSnapshot FleetLink::awaited(const std::function<bool(const FleetSnapshot& now)>& isSo)
{
    return awaitedBy(&FleetLink::snapshot, lookInterval, isSo);
}

FleetSnapshot FleetLink::awaitedListing(const std::function<bool(const FleetSnapshot& now)>& isSo)
{
    return awaitedBy(&FleetLink::listed, listInterval, isSo);
}

FleetSnapshot FleetLink::awaitedBy(Look look, std::chrono::milliseconds interval,
                                   const std::function<bool(const FleetSnapshot& now)>& isSo)
{
    const auto deadline = Clock::now() + asker_.patience().value_or(storePatience);
    for (;;) {
        auto now = (this->*look)();
        if (isSo(now) || Clock::now() > deadline) return now;
        std::this_thread::sleep_for(interval);
    }
}

} // namespace velmora::ctl
