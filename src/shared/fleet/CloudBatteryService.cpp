// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "fleet/CloudBatteryService.h"

#include "fleet/CloudKitManager.h"
#include "platform/Platform.h"

#include <utility>

namespace velmora {

void CloudBatteryService::startMonitoring(Update onUpdate)
{
    callback_ = std::move(onUpdate);
    update();
    timer_ = Platform::current().mainLoop->every(refreshInterval, [this] { update(); });
}

void CloudBatteryService::update()
{
    const auto fetched = [this](const CloudKitManager::State& state) {
        if (const auto callback = callback_; callback && state) callback(*state);
    };
    CloudKitManager::shared().fetchLatestState(std::nullopt, lifetime_.guard(fetched));
}

} // namespace velmora
