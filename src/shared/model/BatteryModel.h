// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "base/Observable.h"
#include "battery/BatteryDataSource.h"
#include "model/FleetPolling.h"
#include "model/NotificationTriggers.h"
#include "platform/Clock.h"
#include "platform/Debouncer.h"
#include "platform/Log.h"
#include "platform/MainLoop.h"
#include "thermal/ThermalMonitorService.h"
#include "wire/VelmoraProtocol.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// Everything that a person sees of the battery, and every charging setting that a person can change. One
/// lives as long as the program.
///
/// The charger is the daemon's: the model sends it all settings whenever one changes, and takes readings,
/// limit, hysteresis and storage mode back from what the daemon reports. The model keeps nothing itself: the
/// recommended mode, the override and the notification switches begin each run with the values below, until
/// the application has them follow what the daemon holds.
///
/// Main thread only. What the daemon answers may arrive on any thread; it reaches the model through the main
/// loop.
class BatteryModel {
    Lifetime lifetime_;

public:
    /// Before any property below changes; a view that redraws from it waits for the end of the turn.
    Signal<> willChange;

    Observable<double> percentage{50, &willChange};
    Observable<ChargingState> chargingState{ChargingState::idle, &willChange};
    /// The limiter is engaged: the battery is held at the limit.
    Observable<bool> isAppleRecommendedModeEnabled{true, &willChange};
    /// Charge to 100 % once, then drop back to the limit.
    Observable<bool> isTemporaryOverrideEnabled{false, &willChange};
    Observable<ThermalMonitorService::ThermalState> thermalState{ThermalMonitorService::ThermalState::nominal,
                                                                 &willChange};
    Observable<std::string> powerSource{"Battery", &willChange};
    Observable<std::int64_t> timeToFull{-1, &willChange};  ///< minutes; -1 unknown
    Observable<std::int64_t> timeToEmpty{-1, &willChange}; ///< minutes; -1 unknown
    Observable<std::int64_t> timeToLimit{-1, &willChange}; ///< minutes; -1 not charging or unknown; derived
    /// Drives the model without hardware. Every assignment starts or stops the simulation anew.
    Observable<bool> isSimulationModeEnabled{false, &willChange, [this] { handleModeChange(); }};
    Observable<double> customChargeLimit{80, &willChange};               ///< percent
    Observable<double> customHysteresis{2, &willChange};                 ///< percentage points
    Observable<bool> isStorageModeEnabled{false, &willChange};           ///< hold the battery at 50 %
    Observable<std::vector<HSHistorySnapshot>> history{{}, &willChange}; ///< as received from the daemon
    Observable<bool> notifyOnLimit{true, &willChange};
    Observable<bool> notifyOnHeat{true, &willChange};
    Observable<bool> notifyOnCycle{false, &willChange};
    Observable<bool> notifyOnLowBattery{true, &willChange}; ///< the daemon never learns it
    Observable<double> lowBatteryLimit{20, &willChange};    ///< percent
    Observable<bool> notifyOnPowerChange{true, &willChange};
    Observable<std::optional<Date>> lastCloudSyncDate{std::nullopt, &willChange};
    Observable<std::vector<SharedBatteryState>> fleetStates{{}, &willChange}; ///< the user's devices
    Observable<std::optional<std::string>> selectedDeviceID{std::nullopt, &willChange};

    static constexpr bool canActuateHardware = true;
    static constexpr std::chrono::seconds simulationInterval{60};

    /// Asks the daemon for its state and its history. Without a client the settings live here only; without a
    /// service nothing else changes.
    BatteryModel(std::shared_ptr<DaemonClientProtocol> daemonClient,
                 std::shared_ptr<BatteryDataSource> batteryService);

    BatteryModel(const BatteryModel&) = delete;
    BatteryModel& operator=(const BatteryModel&) = delete;

    /// Minutes of a charge from `level` to `limit` (percent) that takes so many to 100 %; -1 where that is
    /// not known.
    static std::int64_t minutesToLimit(double level, double limit, std::int64_t minutesToFull);

    /// The recommended mode is on and the level has come to the limit.
    bool isLimitReached() const;

    /// Asks the daemon for its history; the reply replaces `history` as it is.
    void fetchHistory();

    /// Begins the simulation tick, the first step one interval from now. Steps are taken while the simulation
    /// mode is on.
    void startSimulation();

    /// Takes over the settings of `told` from who holds them. What differs is assigned, and all settings are
    /// sent in turn once things are quiet: at once where a quick charge has ended, for only a request that
    /// was taken back can be made anew.
    void followSettings(const ChargingSettings& held, SettingsMask told = SettingsMask().set());

    /// Sends all settings now, or as soon as nothing is held back any more (see FleetPolling). A change of
    /// one sends them by itself, half a second after the last.
    void syncSettingsToDaemon();

    /// What `act` assigns and sends is a person's wish here at the machine.
    void asPerson(const std::function<void()>& act);

    /// Lists the user's devices anew.
    void fetchFleetStates() { fleet_.refresh(); }
    /// Uploads, looks for a command and lists now, without waiting for a minute to pass.
    void syncFleetNow() { fleet_.tick(); }
    /// The daemon went: what it has told of the battery is shown on, and told to no other machine.
    void daemonGone();
    /// What it has to be told by who owns the model.
    FleetPolling& fleet() { return fleet_; }

    /// Flips what is shown. The charger learns nothing of it.
    void toggleCharging();
    /// Flips the mode, takes its effect ahead and sends at once.
    void toggleTemporaryOverride();
    void toggleAppleRecommendedMode();

private:
    friend struct BatteryModelIntake; // the tests' way to the intake of cloud states

    ChargingSettings settings() const;
    void listenToDaemon();
    void startHardwareMonitoring();
    void startCloudSyncTimer();
    void setupDebouncedSettingsSync();

    void fetchInitialState();
    bool fetchStateForFleet();
    void updateFromState(const HSBatteryState& state);
    void updateFromSharedState(const SharedBatteryState& state);
    void recalculateTimeToLimit();
    void checkNotificationTriggers(double oldPercentage, ChargingState oldChargingState,
                                   const std::optional<std::string>& oldPowerSource);

    void handleModeChange();
    void updateBatteryLevel();
    void applyVisualLogic();

    /// A callback for any thread that hands what it is given to `apply` on the main thread, while the model
    /// lives.
    template <typename Value>
    std::function<void(Value)> onMainThread(std::function<void(const Value&)> apply) const;

    std::shared_ptr<DaemonClientProtocol> daemonClient_;
    std::shared_ptr<BatteryDataSource> batteryService_;
    std::shared_ptr<MainLoop> mainLoop_;
    std::shared_ptr<Clock> clock_;
    std::shared_ptr<Log> log_;

    bool isToldOf_ = false; ///< by the daemon
    NotificationTriggers triggers_;
    FleetPolling fleet_;
    unsigned lastQuestion_ = 0; ///< of those that the fleet's polling waits for
    Debouncer settingsSync_;
    std::vector<Subscription> cancellables_;
    MainLoop::Timer simulationTimer_;
};

} // namespace velmora
