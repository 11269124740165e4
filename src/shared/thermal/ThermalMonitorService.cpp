// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "thermal/ThermalMonitorService.h"

#include "base/Mutex.h"
#include "platform/Platform.h"

namespace velmora {

/// What outlives the service while a change signal is being answered on another thread.
struct ThermalMonitorService::Subscriber {
    std::shared_ptr<ThermalLevel> level = Platform::current().thermalLevel;
    Mutex mutex;
    Update onUpdate VELMORA_GUARDED_BY(mutex);

    void deliver()
    {
        Update called;
        {
            const MutexLock lock(mutex);
            called = onUpdate;
        }
        if (called) called(thermalState(level->level()));
    }
};

ThermalMonitorService::ThermalState ThermalMonitorService::thermalState(int level)
{
    using enum ThermalState;
    switch (level) {
    case 1:
        return fair;
    case 2:
        return serious;
    case 3:
        return critical;
    default:
        return nominal;
    }
}

std::string_view ThermalMonitorService::rawValue(ThermalState state)
{
    using enum ThermalState;
    switch (state) {
    case fair:
        return "Fair";
    case serious:
        return "Serious";
    case critical:
        return "Critical";
    case nominal:
        break;
    }
    return "Nominal";
}

std::optional<ThermalMonitorService::ThermalState>
ThermalMonitorService::thermalStateFromRawValue(std::string_view text)
{
    using enum ThermalState;
    for (const auto state : {nominal, fair, serious, critical}) {
        if (text == rawValue(state)) return state;
    }
    return std::nullopt;
}

ThermalMonitorService::ThermalMonitorService()
    : subscriber_(std::make_shared<Subscriber>()),
      changes_(subscriber_->level->observeChanges([weak = std::weak_ptr(subscriber_)] {
          if (const auto subscriber = weak.lock()) subscriber->deliver();
      }))
{
}

void ThermalMonitorService::startMonitoring(Update onUpdate)
{
    {
        const MutexLock lock(subscriber_->mutex);
        subscriber_->onUpdate.swap(onUpdate);
    }
    update();
}

void ThermalMonitorService::update()
{
    // A subscriber may drop the service from inside its call.
    const auto kept = subscriber_;
    kept->deliver();
}

} // namespace velmora
