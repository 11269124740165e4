// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/FleetLink.h"

#include "bus/Records.h"
#include "fleet/FleetArchive.h"
#include "wire/ModelFace.h"

#include <stdexcept>
#include <utility>

namespace velmora::ctl {

using namespace std::chrono_literals;

namespace {

namespace face = wire::face::fleet;

constexpr auto lookInterval = 100ms;
constexpr auto listInterval = 500ms;

std::optional<RecordFault> readFault(sd_bus_message* message)
{
    const auto text = readOptionalText(message);
    return text ? std::optional(faultOf(*text)) : std::nullopt;
}

RecordPlace readPlace(sd_bus_message* message)
try {
    return recordPlaceOf(dbus::readArchive(message));
} catch (const std::invalid_argument&) {
    throw nonsenseOfVelmora();
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

} // namespace

FleetSnapshot readFleet(const dbus::Message& reply)
{
    FleetSnapshot now;
    readProperties(reply, face::face, [&](auto* message, auto name) { readValue(message, name, now); });
    return now;
}

FleetLink::FleetLink(EventLoop& loop, std::optional<std::chrono::seconds> patience)
    : velmora_(loop, face::face, patience)
{
}

FleetSnapshot FleetLink::snapshot()
{
    return readFleet(velmora_.properties());
}

FleetSnapshot FleetLink::listed()
{
    auto before = snapshot();
    if (!before.isOn) return before;
    operate(face::refresh);
    return awaited([&](const auto& now) { return now.lastListDate != before.lastListDate; });
}

void FleetLink::operate(const char* operation, KeyedArchive record)
{
    velmora_.operate(operation, std::move(record));
}

void FleetLink::setAcceptsCommands(bool areAccepted)
{
    velmora_.set(face::acceptsCommands, areAccepted);
}

FleetSnapshot FleetLink::awaited(const std::function<bool(const FleetSnapshot& now)>& isSo)
{
    return velmora_.awaited(
        lookInterval, storePatience, [this] { return snapshot(); }, isSo);
}

FleetSnapshot FleetLink::awaitedListing(const std::function<bool(const FleetSnapshot& now)>& isSo)
{
    return velmora_.awaited(
        listInterval, storePatience, [this] { return listed(); }, isSo);
}

} // namespace velmora::ctl
