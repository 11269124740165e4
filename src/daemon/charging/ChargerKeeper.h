// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "base/TokenBucket.h"
#include "charging/ChargeActuator.h"
#include "charging/HeldLevel.h"
#include "platform/Clock.h"
#include "platform/LogBudget.h"
#include "platform/MainLoop.h"
#include "platform/WorkQueue.h"
#include "wire/ChargerReport.h"

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace velmora {

/// Keeps the charger at what was decided, and knows what it holds. Repairs what was reset, a few times an
/// hour at most: more is a quarrel with another program. Where a driver reports something else than was
/// written, the value is written again after some minutes, then ever more seldom, once an hour in the end.
/// Files are written on a worker, since firmware may hold a write for seconds; everything here belongs to the
/// main thread.
class ChargerKeeper {
public:
    struct Ports {
        MainLoop& loop;
        const Clock& clock;
        Log& log;
        WorkQueue& hardware; ///< the worker that alone calls the actuator
        ChargeActuator& actuator;
    };

    /// In a row, then one each quarter of an hour: enough for resets by firmware and drivers, too few to
    /// fight with another program.
    static constexpr std::size_t maximumRepairs = 4;

    static constexpr std::size_t maximumActions = 20; ///< that are remembered

    /// `acted` is called after each attempt to change the charger, with whether it changed.
    /// `heldLevel` is that of the last run.
    ChargerKeeper(const Ports& ports, std::function<void(bool changed)> acted,
                  std::string_view heldLevel = "");

    /// The chargers as a look at the machine shows them.
    void observe(const std::vector<BatteryCharger>& chargers);

    /// Makes the charger hold this, now and after every later look. Returns whether an attempt is on its way,
    /// of which `acted` will tell.
    bool hold(const ChargeDecision& decision);

    /// Whether the chargers hold what was decided last, as far as they can be told.
    bool holdsWanted() const;

    /// Has the worker tell the chargers this, whatever it is doing now, and hears no more of it: for the end
    /// of the program.
    void leaveAt(const Thresholds& wanted);

    /// After a plug or a resume: what the driver made of values is forgotten, and the next `hold` is no
    /// repair.
    void forgetHistory();

    /// The best control that any battery offers.
    ChargeControl control() const;
    const std::vector<BatteryCharger>& chargers() const { return chargers_; }
    /// What the first battery that has any control holds and obeys; nothing where that cannot be read. Of a
    /// fixed limit: what it surely does.
    std::optional<Thresholds> inForce() const;

    /// What was done, the newest last.
    const std::vector<ChargerAction>& actions() const { return actions_; }
    /// Learns from what the battery does at which level a fixed limit holds; whether that was news.
    bool learn(const ChargeReading& reading);
    /// A text of `FixedLimit`, to be remembered over a restart; empty for nothing learnt.
    std::string heldLevel() const { return heldLevel_.text(); }

    /// Fills in what is known of the charger.
    void describe(ChargerReport& report) const;

private:
    struct Attempt {
        Thresholds wanted;
        std::string reason; ///< of the decision that it was for; another may stand by now
        ChargeActuator::Outcome outcome;
    };

    const BatteryCharger* controlled() const;
    const FixedLimit* fixedLimitInForce() const;
    bool isNewcomer(const BatteryCharger& charger) const;
    bool mayWrite(const Thresholds& wanted);
    bool deviates(const Thresholds& wanted) const;
    bool isRetryDue(const Thresholds& wanted);
    std::vector<std::string> batteries() const;
    void begin(const Thresholds& wanted, const std::string& reason, bool afresh);
    void wrote(Attempt attempt);
    void settle(const Attempt& attempt);
    void attempted(const Attempt& attempt);
    void planRetry(const Thresholds& wanted);
    void noteChange(const Attempt& attempt);

    Lifetime lifetime_;
    Ports ports_;
    std::function<void(bool)> acted_;
    HeldLevel heldLevel_;
    std::vector<BatteryCharger> chargers_;
    std::optional<ChargeDecision> decision_;
    std::optional<Thresholds> attempted_; ///< what the last attempt was for
    bool isActing_ = false;
    bool isAfresh_ = true;
    bool hasGivenUp_ = false; ///< the log has said so
    bool isRefused_ = false;  ///< the last attempt could not write what it was for
    TokenBucket repairs_{maximumRepairs, std::chrono::minutes{15}};
    MainLoop::Timer settling_;
    std::optional<std::chrono::milliseconds> retryAt_; ///< since boot; absent while no driver deviates
    std::chrono::milliseconds retryDelay_;             ///< to the retry after the next attempt
    LogBudget changeLog_;                              ///< clients may ask for a new one at any pace
    std::vector<ChargerAction> actions_;               ///< the newest last
};

} // namespace velmora
