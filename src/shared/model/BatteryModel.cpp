// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/BatteryModel.h"

#include "base/Saturate.h"
#include "base/Text.h"
#include "history/AnalyticsStore.h"
#include "platform/Platform.h"

#include <algorithm>
#include <array>
#include <variant>

namespace velmora {

namespace {

constexpr std::chrono::milliseconds settingsQuiet{500};

ChargingState chargingStateOf(bool isCharging)
{
    return isCharging ? ChargingState::charging : ChargingState::idle;
}

void flip(Observable<bool>& flag)
{
    flag.set(!flag.get());
}

/// A property of the model that shows a setting which the daemon holds.
struct HeldProperty {
    std::variant<Observable<bool> BatteryModel::*, Observable<double> BatteryModel::*> member;
    bool isSentAtOnce = false; ///< by the operation that flips it, and so not half a second later
};

/// In the order of the settings' table.
constexpr std::array<HeldProperty, allSettings.size()> heldProperties{{
    {&BatteryModel::isAppleRecommendedModeEnabled, true},
    {&BatteryModel::isTemporaryOverrideEnabled, true},
    {&BatteryModel::isStorageModeEnabled},
    {&BatteryModel::customChargeLimit},
    {&BatteryModel::customHysteresis},
    {&BatteryModel::notifyOnLimit},
    {&BatteryModel::notifyOnHeat},
    {&BatteryModel::notifyOnCycle},
    {&BatteryModel::notifyOnPowerChange},
    {&BatteryModel::lowBatteryLimit},
}};

} // namespace

BatteryModel::BatteryModel(std::shared_ptr<DaemonClientProtocol> daemonClient,
                           std::shared_ptr<BatteryDataSource> batteryService)
    : daemonClient_(std::move(daemonClient)),
      batteryService_(std::move(batteryService)),
      mainLoop_(Platform::current().mainLoop),
      clock_(Platform::current().clock),
      log_(Platform::current().log),
      fleet_(*this, {.show = [this](const auto& state) { updateFromSharedState(state); },
                     .ask = [this] { return fetchStateForFleet(); },
                     .isToldOf = [this] { return isToldOf_ || !daemonClient_; }}),
      settingsSync_(*mainLoop_, settingsQuiet, [this] { syncSettingsToDaemon(); })
{
    listenToDaemon();
    fetchInitialState();
    fetchHistory();
    AnalyticsStore::shared(); // it loads now, so that the first record meets the whole history
    startHardwareMonitoring();
    startCloudSyncTimer();
    setupDebouncedSettingsSync();
}

bool BatteryModel::isLimitReached() const
{
    return isAppleRecommendedModeEnabled.get() && percentage.get() >= customChargeLimit.get();
}

// Live readings come from the daemon; the battery service is asked only when a simulation ends.
void BatteryModel::startHardwareMonitoring()
{
    log_->info("BatteryModel", "Starting hardware monitoring on Linux.");
}

void BatteryModel::startCloudSyncTimer()
{
    cancellables_.push_back(selectedDeviceID.observe([this](const auto& incoming) {
        if (incoming != selectedDeviceID.get()) listenToDaemon();
    }));
    fleet_.start();
}

// -- Settings

void BatteryModel::setupDebouncedSettingsSync()
{
    const auto watch = [this](auto& setting) {
        cancellables_.push_back(setting.observe([this](const auto&) { settingsSync_.poke(); }));
    };
    for (const auto& [property, isSentAtOnce] : heldProperties)
        if (!isSentAtOnce) std::visit([&](auto member) { watch(this->*member); }, property);
    watch(notifyOnLowBattery);
}

void BatteryModel::followSettings(const ChargingSettings& held, SettingsMask told)
{
    const bool wasOverridden = isTemporaryOverrideEnabled.get();
    bool hasChanged = false;
    for (std::size_t i = 0; i < allSettings.size(); ++i) {
        const auto follow = [&]<typename T>(Observable<T> BatteryModel::*member) {
            const T value = std::get<T>(allSettings[i].of(held));
            if (!told[i] || (this->*member).get() == value) return;
            (this->*member).set(value);
            hasChanged = true;
        };
        std::visit(follow, heldProperties[i].member);
    }
    if (wasOverridden && !isTemporaryOverrideEnabled.get()) return syncSettingsToDaemon();
    if (hasChanged) settingsSync_.poke();
}

ChargingSettings BatteryModel::settings() const
{
    ChargingSettings settings;
    for (std::size_t i = 0; i < allSettings.size(); ++i)
        std::visit([&](auto member) { allSettings[i].assign(settings, (this->*member).get()); },
                   heldProperties[i].member);
    return settings;
}

void BatteryModel::syncSettingsToDaemon()
{
    if (!daemonClient_) return;
    if (fleet_.isHoldingBack()) return fleet_.sendLater();
    daemonClient_->updateSettings(settings());
}

void BatteryModel::asPerson(const std::function<void()>& act)
{
    const auto before = settings();
    if (daemonClient_)
        daemonClient_->asPerson(act);
    else
        act();
    const auto now = settings();
    fleet_.changedByPerson(differing(before, now), now);
}

void BatteryModel::toggleCharging()
{
    chargingState.set(chargingStateOf(chargingState.get() != ChargingState::charging));
}

void BatteryModel::toggleTemporaryOverride()
{
    flip(isTemporaryOverrideEnabled);
    applyVisualLogic();
    syncSettingsToDaemon();
}

void BatteryModel::toggleAppleRecommendedMode()
{
    flip(isAppleRecommendedModeEnabled);
    applyVisualLogic();
    syncSettingsToDaemon();
}

// -- Intake

template <typename Value>
std::function<void(Value)> BatteryModel::onMainThread(std::function<void(const Value&)> apply) const
{
    return [loop = mainLoop_, apply = lifetime_.guard(std::move(apply))](Value value) {
        loop->post([apply, value = std::move(value)] { apply(value); });
    };
}

void BatteryModel::listenToDaemon()
{
    if (!daemonClient_) return;
    daemonClient_->onStateChange =
        onMainThread<HSBatteryState>([this](const auto& state) { updateFromState(state); });
}

/// The answer of a daemon that went, and to an older question, is dropped.
bool BatteryModel::fetchStateForFleet()
{
    if (!daemonClient_) return false;
    const auto answered = [this, question = ++lastQuestion_](const HSBatteryState& state) {
        if (question != lastQuestion_) return;
        updateFromState(state);
        fleet_.answered();
    };
    daemonClient_->fetchCurrentState(onMainThread<HSBatteryState>(answered));
    return true;
}

void BatteryModel::daemonGone()
{
    isToldOf_ = false;
    fleet_.daemonGone();
}

void BatteryModel::fetchInitialState()
{
    if (!daemonClient_) return;
    daemonClient_->fetchCurrentState(
        onMainThread<HSBatteryState>([this](const auto& state) { updateFromState(state); }));
}

void BatteryModel::fetchHistory()
{
    if (!daemonClient_) return;
    using History = std::vector<HSHistorySnapshot>;
    daemonClient_->fetchHistory(
        onMainThread<History>([this](const auto& received) { history.set(received); }));
}

void BatteryModel::updateFromState(const HSBatteryState& state)
{
    isToldOf_ = true;
    using Thermal = ThermalMonitorService;
    percentage.set(state.percentage);
    chargingState.set(chargingStateOf(state.isCharging));
    powerSource.set(state.powerSource);
    thermalState.set(
        Thermal::thermalStateFromRawValue(state.thermalState).value_or(Thermal::ThermalState::nominal));
    customChargeLimit.set(state.customChargeLimit);
    customHysteresis.set(state.customHysteresis);
    timeToFull.set(state.timeToFull);
    timeToEmpty.set(state.timeToEmpty);
    isStorageModeEnabled.set(state.isStorageModeEnabled);
    recalculateTimeToLimit();
}

void BatteryModel::updateFromSharedState(const SharedBatteryState& state)
{
    constexpr double assumedHealth = 94; // a cloud state carries none
    const double oldPercentage = percentage.get();
    const ChargingState oldChargingState = chargingState.get();
    percentage.set(std::max(0.0, std::min(state.percentage, 100.0))); // in this order, NaN becomes 0
    chargingState.set(chargingStateOf(state.isCharging));
    powerSource.set(trimmed(state.powerSource));
    timeToFull.set(state.timeToFull);
    timeToEmpty.set(state.timeToEmpty);
    isStorageModeEnabled.set(state.isStorageModeEnabled.value_or(false));
    lastCloudSyncDate.set(clock_->now());
    checkNotificationTriggers(oldPercentage, oldChargingState, powerSource.get());
    AnalyticsStore::shared().record(percentage.get(),
                                    std::string(ThermalMonitorService::rawValue(thermalState.get())),
                                    state.isCharging, assumedHealth);
    recalculateTimeToLimit();
}

void BatteryModel::recalculateTimeToLimit()
{
    const bool isCharging = chargingState.get() == ChargingState::charging;
    timeToLimit.set(isCharging ? minutesToLimit(percentage.get(), customChargeLimit.get(), timeToFull.get())
                               : -1);
}

std::int64_t BatteryModel::minutesToLimit(double level, double limit, std::int64_t minutesToFull)
{
    if (minutesToFull < 1) return -1;
    const double toLimit = limit - level;
    const double toFull = 100 - level;
    const bool isBelow = toLimit > 0 && toFull > 0;
    return isBelow ? truncated(toLimit / toFull * static_cast<double>(minutesToFull)) : 0;
}

void BatteryModel::checkNotificationTriggers(double, ChargingState oldChargingState,
                                             const std::optional<std::string>& oldPowerSource)
{
    triggers_.check(*this, oldChargingState, oldPowerSource);
}

// -- Simulation

void BatteryModel::handleModeChange()
{
    if (isSimulationModeEnabled.get()) return startSimulation();
    simulationTimer_ = nullptr;
    if (batteryService_) batteryService_->update();
    fetchInitialState();
}

void BatteryModel::startSimulation()
{
    simulationTimer_ = mainLoop_->every(simulationInterval, [this] { updateBatteryLevel(); });
}

void BatteryModel::updateBatteryLevel()
{
    if (!isSimulationModeEnabled.get()) return;
    const double level = percentage.get();
    if (chargingState.get() == ChargingState::charging) {
        if (level < 100) percentage.set(level + 1);
    } else if (level > 0) {
        percentage.set(level - 1);
    }
    applyVisualLogic();
}

// What a charger with fixed thresholds would do; the daemon's real one follows the settings.
void BatteryModel::applyVisualLogic()
{
    constexpr double stopAt = 80;
    constexpr double resumeBelow = 78;
    if (isTemporaryOverrideEnabled.get()) {
        if (percentage.get() < 100) return chargingState.set(ChargingState::charging);
        isTemporaryOverrideEnabled.set(false);
    }
    if (!isAppleRecommendedModeEnabled.get()) return;
    if (percentage.get() >= stopAt) return chargingState.set(ChargingState::idle);
    if (percentage.get() < resumeBelow) chargingState.set(ChargingState::charging);
}

} // namespace velmora
