// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "HeatGuard.h"
#include "HistoryRecorder.h"
#include "LimitAdoption.h"
#include "LookSchedule.h"
#include "ManualControl.h"
#include "SettingsIntake.h"
#include "StateKeeper.h"
#include "base/Lifetime.h"
#include "charging/ChargeEventRules.h"
#include "charging/ChargerKeeper.h"
#include "charging/QuickCharge.h"
#include "link/DaemonService.h"
#include "link/PushPacer.h"
#include "platform/LogBudget.h"
#include "power/TimeEstimator.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// The daemon: looks at the battery, holds the charger to what follows from that and from the settings,
/// remembers, and tells. Main thread only; what may take long is done on two workers, one for /sys and
/// one for the state directory.
class Daemon final : public DaemonService {
public:
    /// What the daemon says by itself.
    struct Outbound {
        std::function<void(const HSBatteryState&)> push;
        std::function<void(const std::string& busName, const HSBatteryState&)> pushTo;
        std::function<void(const ChargerReport&)> chargerChanged;
        std::function<void(const std::vector<BatteryReport>&)> batteriesChanged;
        std::function<void(const ChargeEvent&)> occurred;
        /// Has the machine wait a moment with going to sleep, or no longer.
        std::function<void(bool)> delaySleep;
        std::function<void(const KeyedArchive& settings)> settingsChanged;
        std::function<void(const std::string& busName, const KeyedArchive& settings)> settingsChangedFor;
        std::function<void(const std::string& busName, Refused why)> changeRefusedFor;
        /// Asks for the right of a caller that has it not by itself; see Authority.
        std::function<void(const Caller&, std::function<void(std::optional<Refused>)>)> authorise;
        std::function<void(const std::string& busName)> withdrawQuestion;
    };

    struct Ports {
        MainLoop& loop;
        const Clock& clock;
        Log& log;
        WorkQueue& hardware; ///< the worker that alone calls the next two
        PowerSnapshotReader& reader;
        ChargeActuator& actuator;
        WorkQueue& files; ///< the worker that alone writes through the two stores
        SettingsStore& settings;
        HistoryStore& history;
        uid_t ownUser = 0; ///< may change settings, as root may: nobody is asked about these two
        std::chrono::seconds heatPatience = HeatPause::usualPatience;
    };

    /// Loads the settings; the history is read after the first answer.
    Daemon(const Ports& ports, Outbound outbound);

    /// Names the bus that clients will call on. If it is the one of the last run, what they said then still
    /// counts.
    void meetBus(const std::string& busId);

    /// Looks at the machine for the first time and calls `ready` once that is done, or after two seconds if
    /// the firmware does not answer.
    void start(std::function<void()> ready);

    /// Something about the power supplies may have changed; `afresh`: this is the first look at it.
    void look(bool afresh = true) { schedule_.look(afresh); }
    /// The machine is going to sleep; `done` is called once that may be.
    void goToSleep(std::function<void()> done) { heat_.goToSleep(ports_.clock.sinceBoot(), std::move(done)); }
    /// The machine woke up: firmware and drivers may have reset the charger.
    void resumed();
    /// Hands what is not saved yet to the files' worker.
    void save();
    /// For the end of the program: hands what ends a pause for heat to the hardware's worker. Whether there
    /// is one.
    bool endHeatPause();

    void ask(std::function<void()> answer) override { schedule_.ask(std::move(answer)); }
    HSBatteryState batteryState() override;
    const std::vector<HSHistorySnapshot>& analyticsHistory() override;
    ChargerReport charger() override;
    const std::vector<BatteryReport>& batteries() override { return batteries_; }
    const std::vector<ChargerAction>& chargerActions() override { return keeper_.actions(); }
    ChargingSettings settings(const Caller& caller) override { return intake_.tell(caller); }
    void changeSettings(const Caller& caller, const SettingsChange& change, SettingsReply reply) override
    {
        intake_.change(caller, change, std::move(reply));
    }
    void updateSettings(const Caller& caller, const ChargingSettings& settings) override
    {
        intake_.take(caller, settings);
    }
    void controlCharging(const Caller& caller, ChargingCommand command, ChargingReply reply) override
    {
        manual_.control(caller, command, reply);
    }
    void beginTravelCharge(const Caller& caller, ChargingReply reply) override
    {
        intake_.beginTravelCharge(caller, std::move(reply));
    }
    void callerLeft(const std::string& busName) override;

private:
    void seen(const Look& look);
    void readBattery(const Look& look);
    void noticePlug(bool hadExternalPower);
    void observeQuickCharge();
    void observeHeat();
    void endHeat();
    ChargeDecision decide(std::optional<int> heatPausedAt) const;

    SettingsIntake::Ports intakePorts();
    HeatGuard::Ports heatPorts();
    LimitAdoption::Ports adoptionPorts();
    ManualControl::Ports manualPorts();
    void authorise(const Caller& caller, std::function<void(std::optional<Refused>)> decided);
    void settingsChanged(const Caller& caller, const ChargingSettings& before);
    HSBatteryState batteryState(const ChargingSettings& settings) const;
    void tellOnceItShows(const std::string& busName);
    void isNowReady();

    bool hold();
    void holdAnew();
    void acted(bool changed);
    bool isChargingAllowed() const;
    bool isPaused() const;
    void tell();
    void tellState();
    void tellEvents();
    bool seeksControl() const;
    void planNextLook();
    bool isWorthWatching() const;
    DaemonState remembered() const;

    Lifetime lifetime_;
    Ports ports_;
    Outbound outbound_;
    std::string busId_;
    LogBudget changes_;

    StateKeeper state_;
    HistoryRecorder past_;
    QuickCharge quickCharge_;
    SettingsIntake intake_;
    ManualControl manual_;
    HeatGuard heat_;
    LimitAdoption adoption_;
    ChargeEventRules events_;
    bool isOverrideFulfilled_ = false; ///< and has not been told
    ChargeMode mode_{};

    std::vector<BatteryReport> batteries_;  ///< as last read
    std::optional<MachineBattery> battery_; ///< absent on a machine without one, and before the first look
    ChargeReading reading_{};
    TimeEstimator estimator_;
    TimeEstimator::Minutes minutes_{};
    int thermalLevel_ = 0;

    LookSchedule schedule_;
    ChargerKeeper keeper_;
    PushPacer pacer_;
    std::function<void()> ready_;
    MainLoop::Timer readyTimer_;
    std::vector<std::string> unshown_; ///< who changed what the charger does and has not been told of it yet
    MainLoop::Timer effect_;
    std::chrono::milliseconds started_{};
    bool isUnreadable_ = false; ///< there is a battery, but the last look could not read it
};

} // namespace velmora
