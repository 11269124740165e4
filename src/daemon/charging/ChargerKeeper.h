// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "charging/ChargeActuator.h"
#include "charging/RepairBudget.h"
#include "platform/Clock.h"
#include "platform/LogBudget.h"
#include "platform/MainLoop.h"
#include "platform/PowerSources.h"
#include "platform/ThermalLevel.h"
#include "platform/WorkQueue.h"
#include "wire/ChargerReport.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace velmora {

/// Keeps the charger at what was decided, and knows what it holds. The files of /sys are read and written on
/// a worker, since firmware may hold either for seconds; everything else here belongs to the main thread.
class ChargerKeeper {
public:
    /// What one look at the machine shows.
    struct Look {
        std::vector<PowerSourceDescription> sources;
        int thermalLevel = 0;
        std::vector<BatteryCharger> chargers;
    };

    struct Ports {
        MainLoop& loop;
        const Clock& clock;
        Log& log;
        WorkQueue& hardware; ///< the worker that alone touches the next three
        PowerSources& powerSources;
        ThermalLevel& thermalLevel;
        ChargeActuator& actuator;
    };

    /// `seen` is called with each look at the machine; `acted` after each attempt to change the charger, with
    /// whether it changed.
    ChargerKeeper(const Ports& ports, std::function<void(const Look&)> seen,
                  std::function<void(bool changed)> acted);

    /// Reads the machine. A look asked for while one is on its way is taken after it, once.
    void look();

    /// Makes the charger hold this, now and after every later look. Returns whether an attempt is on its way,
    /// of which `acted` will tell.
    bool hold(const ChargeDecision& decision);

    /// After a plug or a resume: what the driver made of values is forgotten, and the next `hold` is no
    /// repair.
    void forgetHistory();

    /// The best control that any battery offers.
    ChargeControl control() const;
    const std::vector<BatteryCharger>& chargers() const { return chargers_; }
    /// What the first battery that has any control holds and obeys; nothing where that cannot be read.
    std::optional<Thresholds> inForce() const;

    /// Fills in what is known of the charger.
    void describe(ChargerReport& report) const;

private:
    struct Attempt {
        Thresholds wanted;
        std::string reason; ///< of the decision that it was for; another may stand by now
        ChargeActuator::Outcome outcome;
    };

    void took(const Look& look);
    bool isNewcomer(const BatteryCharger& charger) const;
    bool mayWrite(const Thresholds& wanted);
    void attempted(const Attempt& attempt);

    Lifetime lifetime_;
    Ports ports_;
    std::function<void(const Look&)> seen_;
    std::function<void(bool)> acted_;
    bool isLooking_ = false;
    bool isLookWanted_ = false;
    std::vector<BatteryCharger> chargers_;
    std::optional<ChargeDecision> decision_;
    std::optional<Thresholds> attempted_; ///< what the last attempt was for
    bool isActing_ = false;
    bool isAfresh_ = true;
    bool hasGivenUp_ = false; ///< the log has said so
    RepairBudget repairs_;
    LogBudget changeLog_; ///< clients may ask for a new one at any pace
    std::string lastAction_ = "none";
    std::string lastReason_ = "none";
    Date lastActionDate_{};
};

} // namespace velmora
