// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/SettingsChange.h"
#include "wire/BatteryReport.h"
#include "wire/ChargerInterface.h"
#include "wire/ChargerReport.h"
#include "wire/VelmoraProtocol.h"

#include <functional>
#include <string>
#include <sys/types.h>
#include <variant>
#include <vector>

namespace velmora {

/// Who sent a message: a connection to the bus, and the user behind it as the bus itself tells.
struct Caller {
    std::string busName; ///< unique name, ":1.42"
    uid_t uid;
    bool mayInteract = false; ///< the message allows that a person is asked for a password
};

/// Why something was refused.
struct Refusal {
    Refused why;
    std::string reason; ///< a phrase for the caller
};

enum class ChargingCommand : std::uint8_t {
    toggle, ///< stops charging where it is allowed, else allows it
    pause,
    resume, ///< ends a pause, and nothing else
};

/// What the daemon does behind the wire. Main thread only; nothing here blocks.
class DaemonService {
public:
    using ChargingReply = std::function<void(const std::variant<bool, Refusal>&)>;
    using SettingsReply = std::function<void(const std::variant<ChargingSettings, Refusal>&)>;

    virtual ~DaemonService() = default;

    /// Calls `answer` once what is known of the machine is at most a few seconds old, and after 50 ms at the
    /// latest.
    virtual void ask(std::function<void()> answer) = 0;

    virtual HSBatteryState batteryState() = 0;
    virtual const std::vector<HSHistorySnapshot>& analyticsHistory() = 0;
    virtual ChargerReport charger() = 0;
    virtual const std::vector<BatteryReport>& batteries() = 0;
    virtual const std::vector<ChargerAction>& chargerActions() = 0;

    /// All settings as they are held for the caller's user.
    virtual ChargingSettings settings(const Caller& caller) = 0;

    /// Calls `reply` once, now or later, with all settings as they are then held. The values' ranges are not
    /// checked yet.
    virtual void changeSettings(const Caller& caller, const SettingsChange& change, SettingsReply reply) = 0;

    /// Values are as the caller sent them: nothing is checked yet.
    virtual void updateSettings(const Caller& caller, const ChargingSettings& settings) = 0;

    /// Calls `reply` once, now or later, with whether charging is allowed afterwards, or with why this was
    /// refused.
    virtual void controlCharging(const Caller& caller, ChargingCommand command, ChargingReply reply) = 0;

    /// Begins a quick charge before a journey where none is under way and charging is not paused. Calls
    /// `reply` once, now or later, with whether the battery is being charged for it then, or with why this
    /// was refused.
    virtual void beginTravelCharge(const Caller& caller, ChargingReply reply) = 0;

    /// The connection has left the bus; its name will not come again.
    virtual void callerLeft(const std::string& busName) = 0;
};

} // namespace velmora
