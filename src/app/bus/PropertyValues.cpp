// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/PropertyValues.h"

#include "bus/Records.h"
#include "fleet/FleetArchive.h"

#include <array>
#include <cmath>
#include <span>
#include <string_view>

namespace velmora::property {

namespace {

template <typename T>
KeyedArchive::Value plain(const T& value)
{
    if constexpr (std::is_same_v<T, Date>)
        return value.sinceReference;
    else
        return value;
}

template <typename T>
void appendOptional(sd_bus_message* reply, const std::optional<T>& value)
{
    const char type[] = {dbus::typeOf(plain(T{})), '\0'};
    dbus::check(sd_bus_message_open_container(reply, 'a', type), "open an optional");
    if (value) dbus::append(reply, plain(*value));
    dbus::check(sd_bus_message_close_container(reply), "close an optional");
}

KeyedArchive archived(const HSHistorySnapshot& sample)
{
    return sample.archived();
}

KeyedArchive archived(const SharedBatteryState& state)
{
    KeyedArchive archive;
    archive.encode("percentage", state.percentage);
    archive.encode("isCharging", state.isCharging);
    archive.encode("powerSource", state.powerSource);
    archive.encode("timeToFull", state.timeToFull);
    archive.encode("timeToEmpty", state.timeToEmpty);
    const auto encode = [&archive](const char* key, const auto& value) {
        if (value) archive.encode(key, plain(*value));
    };
    encode("remoteChargeLimit", state.remoteChargeLimit);
    encode("remoteAppleMode", state.remoteAppleMode);
    encode("isStorageModeEnabled", state.isStorageModeEnabled);
    encode("commandTimestamp", state.commandTimestamp);
    encode("deviceID", state.deviceID);
    encode("deviceName", state.deviceName);
    encode("thermalState", state.thermalState);
    return archive;
}

template <typename Record>
void appendList(sd_bus_message* reply, const std::vector<Record>& records)
{
    dbus::check(sd_bus_message_open_container(reply, 'a', wire::recordType), "open a list");
    for (const auto& record : records) dbus::append(reply, archived(record));
    dbus::check(sd_bus_message_close_container(reply), "close a list");
}

void checkRange(const wire::face::Property& declared, double value)
{
    if (std::isfinite(value) && value >= declared.lowest && value <= declared.highest) return;
    throw Refusal(std::string(declared.name) + " takes " + std::to_string(std::lround(declared.lowest)) +
                  " to " + std::to_string(std::lround(declared.highest)));
}

} // namespace

void append(sd_bus_message* reply, const KeyedArchive::Value& value)
{
    dbus::append(reply, value);
}

void append(sd_bus_message* reply, const std::string& text)
{
    dbus::append(reply, text);
}

void append(sd_bus_message* reply, ChargingState state)
{
    append(reply, std::string(rawValue(state)));
}

void append(sd_bus_message* reply, ThermalMonitorService::ThermalState state)
{
    append(reply, std::string(ThermalMonitorService::rawValue(state)));
}

void append(sd_bus_message* reply, const std::optional<Date>& date)
{
    appendOptional(reply, date);
}

void append(sd_bus_message* reply, const std::optional<std::string>& text)
{
    appendOptional(reply, text);
}

void append(sd_bus_message* reply, const std::optional<WidgetPlace>& place)
{
    const auto [x, y] = place.value_or(WidgetPlace{});
    const std::array coordinates{x, y};
    const std::size_t bytes = place ? sizeof coordinates : 0;
    dbus::check(sd_bus_message_append_array(reply, 'i', coordinates.data(), bytes), "append a place");
}

void append(sd_bus_message* reply, const std::vector<HSHistorySnapshot>& samples)
{
    appendList(reply, samples);
}

void append(sd_bus_message* reply, const std::optional<RecordFault>& fault)
{
    append(reply, fault ? std::optional(faultText(*fault)) : std::nullopt);
}

void append(sd_bus_message* reply, const RecordPlace& place)
{
    dbus::append(reply, velmora::archived(place));
}

void append(sd_bus_message* reply, const std::vector<DeviceReport>& devices)
{
    appendList(reply, devices);
}

void append(sd_bus_message* reply, const std::vector<SharedBatteryState>& states)
{
    appendList(reply, states);
}

void read(sd_bus_message* message, const wire::face::Property&, bool& value)
{
    int truth = 0;
    dbus::check(sd_bus_message_read_basic(message, 'b', &truth), "read a switch");
    value = truth != 0;
}

void read(sd_bus_message* message, const wire::face::Property& declared, double& value)
{
    dbus::check(sd_bus_message_read_basic(message, 'd', &value), "read a number");
    checkRange(declared, value);
}

void read(sd_bus_message* message, const wire::face::Property& declared, std::optional<std::string>& value)
{
    dbus::check(sd_bus_message_enter_container(message, 'a', "s"), "enter an optional");
    const char* text = nullptr;
    value.reset();
    while (dbus::check(sd_bus_message_read_basic(message, 's', &text), "read a text") > 0) {
        if (value || std::string_view(text).size() > dbus::maximumTextBytes)
            throw Refusal(std::string(declared.name) + " takes one short text, or none");
        value = text;
    }
    dbus::check(sd_bus_message_exit_container(message), "leave an optional");
}

void read(sd_bus_message* message, const wire::face::Property& declared, std::optional<WidgetPlace>& value)
{
    const void* data = nullptr;
    std::size_t bytes = 0;
    dbus::check(sd_bus_message_read_array(message, 'i', &data, &bytes), "read a place");
    const std::span coordinates(static_cast<const std::int32_t*>(data), bytes / sizeof(std::int32_t));
    value.reset();
    if (coordinates.empty()) return;
    if (coordinates.size() != 2) throw Refusal(std::string(declared.name) + " takes two numbers, or none");
    for (const auto one : coordinates) checkRange(declared, one);
    value = {coordinates[0], coordinates[1]};
}

} // namespace velmora::property
