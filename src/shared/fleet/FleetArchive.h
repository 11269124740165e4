// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "fleet/DeviceReport.h"
#include "platform/RecordStores.h"
#include "wire/KeyedArchive.h"

#include <string>
#include <string_view>

/// The fleet's values as wire::face::fleet has them.
namespace velmora {

/// One of recordFaultTexts, and the fault that it stands for; `other` for a text that is none of them.
std::string faultText(RecordFault fault);
RecordFault faultOf(std::string_view text);

KeyedArchive archived(const RecordPlace& place);

/// What is missing has its default, other keys are passed over. Throws std::invalid_argument, in words for
/// who wrote it, for a value of another type and for one that is none of those allowed.
RecordPlace recordPlaceOf(const KeyedArchive& archive);

/// What is not known of a device has no key.
KeyedArchive archived(const DeviceReport& device);
/// Never fails, as a report that is made of a record does not.
DeviceReport deviceReportOf(const KeyedArchive& archive);

/// What another machine is to take over.
struct FleetCommand {
    std::string deviceID; ///< of that machine
    double limit = 0;     ///< percent
    bool isAutoProtectOn = false;
    bool isStorageModeOn = false;
};

KeyedArchive archived(const FleetCommand& command);
/// Throws std::invalid_argument where a value is missing or of another type.
FleetCommand fleetCommandOf(const KeyedArchive& archive);
/// The device that `archive` names; throws likewise.
std::string deviceIDOf(const KeyedArchive& archive);

} // namespace velmora
