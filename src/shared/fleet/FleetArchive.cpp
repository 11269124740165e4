// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "fleet/FleetArchive.h"

#include "wire/ModelFace.h"
#include "wire/TypedValue.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace velmora {

namespace {

using wire::required;
using wire::typed;

template <typename Enum, std::size_t Count>
std::string textOf(const std::array<const char*, Count>& texts, Enum value)
{
    return texts.at(static_cast<std::size_t>(value));
}

template <typename Enum, std::size_t Count>
Enum valueOf(const std::array<const char*, Count>& texts, const KeyedArchive& archive, const std::string& key,
             Enum otherwise)
{
    const auto text = typed<std::string>(archive, key, textOf(texts, otherwise));
    const auto* found = std::ranges::find(texts, text);
    if (found == texts.end()) throw std::invalid_argument(key + " takes no \"" + text + "\"");
    return static_cast<Enum>(found - texts.begin());
}

/// Records keep dates as such, archives as numbers.
constexpr std::array dateFields{device_record::lastUpdate, device_record::commandTimestamp,
                                device_record::commandTaken};

void addField(CloudRecord::Fields& fields, const std::string& key, const KeyedArchive::Value& value)
{
    const auto* number = std::get_if<double>(&value);
    if (const auto* truth = std::get_if<bool>(&value)) fields.insert_or_assign(key, *truth);
    if (const auto* text = std::get_if<std::string>(&value)) fields.insert_or_assign(key, *text);
    if (!number || !std::isfinite(*number)) return;
    const bool isDate = std::ranges::find(dateFields, std::string_view(key)) != dateFields.end();
    fields.insert_or_assign(key, isDate ? CloudRecord::Value(Date{*number}) : *number);
}

} // namespace

std::string faultText(RecordFault fault)
{
    return textOf(recordFaultTexts, fault);
}

RecordFault faultOf(std::string_view text)
{
    const auto* found = std::ranges::find(recordFaultTexts, text);
    return found == recordFaultTexts.end() ? RecordFault::other
                                           : static_cast<RecordFault>(found - recordFaultTexts.begin());
}

KeyedArchive archived(const RecordPlace& place)
{
    namespace key = wire::face::fleet::place_key;
    KeyedArchive archive;
    archive.encode(key::kind, textOf(recordPlaceKindTexts, place.kind));
    archive.encode(key::host, place.host);
    archive.encode(key::port, std::int64_t{place.port});
    archive.encode(key::database, place.database);
    archive.encode(key::user, place.user);
    archive.encode(key::trust, textOf(recordTrustTexts, place.trust));
    archive.encode(key::passwordFile, place.passwordFile);
    return archive;
}

RecordPlace recordPlaceOf(const KeyedArchive& archive)
{
    namespace key = wire::face::fleet::place_key;
    RecordPlace place;
    place.kind = valueOf(recordPlaceKindTexts, archive, key::kind, place.kind);
    place.host = typed<std::string>(archive, key::host, place.host);
    const auto port = typed<std::int64_t>(archive, key::port, place.port);
    if (port < 1 || port > std::numeric_limits<std::uint16_t>::max())
        throw std::invalid_argument("port takes 1 to 65535");
    place.port = static_cast<std::uint16_t>(port);
    place.database = typed<std::string>(archive, key::database, place.database);
    place.user = typed<std::string>(archive, key::user, place.user);
    place.trust = valueOf(recordTrustTexts, archive, key::trust, place.trust);
    place.passwordFile = typed<std::string>(archive, key::passwordFile, place.passwordFile);
    return place;
}

KeyedArchive archived(const DeviceReport& device)
{
    using namespace device_record;
    KeyedArchive archive;
    const auto encode = [&archive](const char* key, const auto& value) {
        if (value) archive.encode(key, *value);
    };
    encode(wire::face::fleet::device_key::deviceID, device.state.deviceID);
    archive.encode(percentage, device.state.percentage);
    archive.encode(isCharging, device.state.isCharging);
    encode(thermalState, device.state.thermalState);
    encode(deviceName, device.state.deviceName);
    encode(lastUpdate, device.lastUpdate);
    encode(remoteChargeLimit, device.state.remoteChargeLimit);
    encode(remoteAppleMode, device.state.remoteAppleMode);
    encode(isStorageModeEnabled, device.state.isStorageModeEnabled);
    encode(commandTimestamp, device.state.commandTimestamp);
    encode(commandOrigin, device.commandOrigin);
    if (!device.inForce) return archive;
    archive.encode(limitInForce, device.inForce->limit);
    archive.encode(autoProtectInForce, device.inForce->isAutoProtectOn);
    archive.encode(storageModeInForce, device.inForce->isStorageModeOn);
    archive.encode(acceptsCommands, device.inForce->acceptsCommands);
    encode(commandTaken, device.inForce->commandTaken);
    return archive;
}

DeviceReport deviceReportOf(const KeyedArchive& archive)
{
    CloudRecord::Fields fields;
    for (const auto& [key, value] : archive.values()) addField(fields, key, value);
    DeviceReport device(CloudRecord(device_record::type, "", std::move(fields)));
    device.state.deviceID = archive.decodeText(wire::face::fleet::device_key::deviceID, "");
    return device;
}

KeyedArchive archived(const FleetCommand& command)
{
    namespace key = wire::face::fleet::device_key;
    KeyedArchive archive;
    archive.encode(key::deviceID, command.deviceID);
    archive.encode(key::limit, command.limit);
    archive.encode(key::isAutoProtectOn, command.isAutoProtectOn);
    archive.encode(key::isStorageModeOn, command.isStorageModeOn);
    return archive;
}

FleetCommand fleetCommandOf(const KeyedArchive& archive)
{
    namespace key = wire::face::fleet::device_key;
    return {.deviceID = deviceIDOf(archive),
            .limit = required<double>(archive, key::limit),
            .isAutoProtectOn = required<bool>(archive, key::isAutoProtectOn),
            .isStorageModeOn = required<bool>(archive, key::isStorageModeOn)};
}

std::string deviceIDOf(const KeyedArchive& archive)
{
    return required<std::string>(archive, wire::face::fleet::device_key::deviceID);
}

} // namespace velmora
