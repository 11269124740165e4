// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "App.h"

#include "BatteryHardwareService.h"

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
}

} // namespace velmora
