// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "wire/ChargerReport.h"
#include "wire/VelmoraProtocol.h"

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velmora {

/// Who sent a message: a connection to the bus, and the user behind it as the bus itself tells.
struct Caller {
    std::string busName; ///< unique name, ":1.42"
    uid_t uid;
};

/// What the daemon does behind the wire. Main thread only; nothing here blocks.
class DaemonService {
public:
    using ToggleReply = std::function<void(std::optional<bool>)>;

    virtual ~DaemonService() = default;

    /// Calls `answer` once what is known of the machine is at most a few seconds old, and after 50 ms at the
    /// latest.
    virtual void ask(std::function<void()> answer) = 0;

    virtual HSBatteryState batteryState() = 0;
    virtual const std::vector<HSHistorySnapshot>& analyticsHistory() = 0;
    virtual ChargerReport charger() = 0;

    /// Values are as the caller sent them: nothing is checked yet.
    virtual void updateSettings(const Caller& caller, const ChargingSettings& settings) = 0;

    /// Calls `reply` once, now or later, with whether charging is allowed afterwards; with nothing where the
    /// caller may not do this.
    virtual void toggleCharging(const Caller& caller, ToggleReply reply) = 0;

    /// The connection has left the bus; its name will not come again.
    virtual void callerLeft(const std::string& busName) = 0;
};

} // namespace velmora
