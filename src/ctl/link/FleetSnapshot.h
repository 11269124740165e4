// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "fleet/DeviceReport.h"
#include "platform/RecordStores.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora::ctl {

/// What the user's `velmora` tells of the fleet; see wire::face::fleet.
struct FleetSnapshot {
    bool isOn = false;
    bool acceptsCommands = false;
    RecordPlace place{};
    std::string deviceID{}; ///< this machine's; empty while not known
    std::string deviceName{};
    RecordFault fault = RecordFault::none;
    bool isLeaving = false;
    bool isRecordLeft = false;
    bool isTesting = false;
    std::optional<RecordFault> testResult{};
    std::optional<Date> lastSyncDate{};
    std::optional<Date> lastListDate{};
    std::vector<DeviceReport> devices{};
};

} // namespace velmora::ctl
