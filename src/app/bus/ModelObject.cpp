// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/ModelObject.h"

#include <array>

namespace velmora {

namespace {

/// In the order of the wire's table.
constexpr std::array<void (BatteryModel::*)(), wire::face::operations.size()> operations{
    &BatteryModel::fetchHistory,
    &BatteryModel::syncSettingsToDaemon,
    &BatteryModel::toggleAppleRecommendedMode,
    &BatteryModel::toggleCharging,
    &BatteryModel::toggleTemporaryOverride,
};

} // namespace

ModelObject::ModelObject(MainLoop& loop, sd_bus* bus, BatteryModel& model)
    : model_(model), face_(loop, bus, wire::face::model)
{
    bindProperties();
    addOperations();
    face_.onSetting = [this](const auto& write) {
        obey([&] {
            write();
            model_.syncSettingsToDaemon();
        });
    };
    face_.serve();
}

/// Whoever calls on the session bus is the person, by a window or a script.
void ModelObject::obey(const std::function<void()>& act) const
{
    if (asPerson)
        asPerson(act);
    else
        act();
}

void ModelObject::bindProperties()
{
    face_.bind("percentage", model_.percentage);
    face_.bind("chargingState", model_.chargingState);
    face_.bind("isAppleRecommendedModeEnabled", model_.isAppleRecommendedModeEnabled);
    face_.bind("isTemporaryOverrideEnabled", model_.isTemporaryOverrideEnabled);
    face_.derive("isLimitReached", [this] { return model_.isLimitReached(); });
    face_.bind("thermalState", model_.thermalState);
    face_.bind("powerSource", model_.powerSource);
    face_.bind("timeToFull", model_.timeToFull);
    face_.bind("timeToEmpty", model_.timeToEmpty);
    face_.bind("timeToLimit", model_.timeToLimit);
    face_.bind("isSimulationModeEnabled", model_.isSimulationModeEnabled);
    face_.bind("customChargeLimit", model_.customChargeLimit);
    face_.bind("customHysteresis", model_.customHysteresis);
    face_.bind("isStorageModeEnabled", model_.isStorageModeEnabled);
    face_.bind("history", model_.history);
    face_.bind("notifyOnLimit", model_.notifyOnLimit);
    face_.bind("notifyOnHeat", model_.notifyOnHeat);
    face_.bind("notifyOnCycle", model_.notifyOnCycle);
    face_.bind("notifyOnLowBattery", model_.notifyOnLowBattery);
    face_.bind("lowBatteryLimit", model_.lowBatteryLimit);
    face_.bind("notifyOnPowerChange", model_.notifyOnPowerChange);
    face_.bind("lastCloudSyncDate", model_.lastCloudSyncDate);
    face_.bind("fleetStates", model_.fleetStates);
    face_.bind("selectedDeviceID", model_.selectedDeviceID);
}

void ModelObject::addOperations()
{
    for (std::size_t index = 0; index < operations.size(); ++index) {
        face_.addOperation(wire::face::operations.at(index),
                           [this, index] { obey([&] { (model_.*operations.at(index))(); }); });
    }
    face_.addOperation(wire::face::quit, [this] {
        if (const auto handler = onQuit) handler();
    });
}

} // namespace velmora
