// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "App.h"

#include "BatteryHardwareService.h"

#include <utility>

namespace velmora {

App::App(LinuxPlatform& platform)
    : client_(std::make_shared<XPCClient>(platform.loop(), platform.clock(), platform.log())),
      model_(client_, std::make_shared<BatteryHardwareService>())
{
    // A daemon that starts pushes its state by itself, but not its history.
    client_->onDaemonAppeared = [this] { model_.fetchHistory(); };
    client_->onDaemonPresence = [this] {
        if (const auto told = onDaemonPresence) told();
    };
    client_->onChargerChange = [this] {
        followQuickCharge();
        if (const auto told = onChargerChange) told();
    };
}

/// The daemon ends a quick charge once the battery is full, or unplugged for long. It keeps the request as
/// spent until that is taken back.
void App::followQuickCharge()
{
    const auto report = charger();
    if (!report) return;
    const bool isHeldBack =
        report->mode == ChargerReport::Mode::paused || report->mode == ChargerReport::Mode::resumed;
    if (isHeldBack) return; // by the charging toggle; it may go on
    const bool was = std::exchange(isQuickCharging_, report->mode == ChargerReport::Mode::quickCharge);
    if (was && !isQuickCharging_) model_.isTemporaryOverrideEnabled.set(false);
}

} // namespace velmora
