// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "fleet/DeviceReport.h"
#include "model/BatteryModel.h"
#include "model/WidgetSettings.h"
#include "platform/RecordStores.h"
#include "wire/ModelFace.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// The values of the face's properties on their way to the bus and from it, each as the type that its table
/// declares for it. All throw std::system_error where the message is broken or memory is out.
namespace velmora::property {

/// What a caller got wrong, in words for its developer.
struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void append(sd_bus_message* reply, const KeyedArchive::Value& value);
void append(sd_bus_message* reply, const std::string& text);
void append(sd_bus_message* reply, ChargingState state);
void append(sd_bus_message* reply, ThermalMonitorService::ThermalState state);
void append(sd_bus_message* reply, const std::optional<Date>& date);
void append(sd_bus_message* reply, const std::optional<std::string>& text);
void append(sd_bus_message* reply, const std::optional<WidgetPlace>& place);
void append(sd_bus_message* reply, const std::vector<HSHistorySnapshot>& samples);
void append(sd_bus_message* reply, const std::optional<RecordFault>& fault);
void append(sd_bus_message* reply, const RecordPlace& place);
void append(sd_bus_message* reply, const std::vector<DeviceReport>& devices);
/// What is not known of a state has no key.
void append(sd_bus_message* reply, const std::vector<SharedBatteryState>& states);

// sd-bus has checked that a value that is read is of the declared type. These throw Refusal for one that the
// table does not allow.

void read(sd_bus_message* message, const wire::face::Property& declared, bool& value);
void read(sd_bus_message* message, const wire::face::Property& declared, double& value);
void read(sd_bus_message* message, const wire::face::Property& declared, std::optional<std::string>& value);
void read(sd_bus_message* message, const wire::face::Property& declared, std::optional<WidgetPlace>& value);

template <typename T>
concept Writable = requires(sd_bus_message* message, const wire::face::Property& declared, T& value)
{
    read(message, declared, value);
};

} // namespace velmora::property
