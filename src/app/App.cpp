// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "App.h"

#include "battery/BatteryHardwareService.h"

#include <utility>

namespace velmora {

App::App(LinuxPlatform& platform)
    : client_(std::make_shared<XPCClient>(platform.loop(), platform.clock(), platform.log())),
      model_(client_, std::make_shared<BatteryHardwareService>())
{
    // A daemon that starts pushes its state by itself, but not its history.
    client_->onDaemonAppeared = [this] { model_.fetchHistory(); };
    client_->onDaemonPresence = [this] {
        if (onChargerChange) onChargerChange();
        if (onDaemonPresence) onDaemonPresence();
    };
    client_->onChargerChange = [this] {
        followQuickCharge();
        if (onChargerChange) onChargerChange();
    };
    // A late report of a quick charge that was stopped by hand must not end the next one.
    stopping_ = model_.isTemporaryOverrideEnabled.observe([this](bool isWanted) {
        if (!isWanted) isQuickCharging_ = false;
    });
}

/// The daemon ends a quick charge once the battery is full, or unplugged for long. It keeps the request as
/// spent until that is taken back, and tells the model nothing of it.
void App::followQuickCharge()
{
    const auto report = charger();
    if (!report || !report->hasBattery) return; // a daemon that has not looked yet
    const bool isHeldBack =
        report->mode == ChargerReport::Mode::paused || report->mode == ChargerReport::Mode::resumed;
    if (isHeldBack) return; // by the charging toggle; it may go on
    const bool was = std::exchange(isQuickCharging_, report->mode == ChargerReport::Mode::quickCharge);
    if (!was || isQuickCharging_ || !model_.isTemporaryOverrideEnabled.get()) return;
    model_.isTemporaryOverrideEnabled.set(false);
    model_.syncSettingsToDaemon();
}

} // namespace velmora
