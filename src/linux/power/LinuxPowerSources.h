// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Clock.h"
#include "platform/PowerSources.h"
#include "power/PowerSupplyMonitor.h"
#include "power/PowerSupplyReader.h"
#include "power/TimeEstimator.h"

#include <atomic>
#include <memory>

namespace velmora {

/// The kernel's power supplies as the core's power sources. The laptop's batteries are one description of
/// type "InternalBattery", the first; an uninterruptible power supply is one of type "UPS" after it. A
/// machine without a battery, or whose batteries do not tell their level, has no internal one.
class LinuxPowerSources final : public PowerSources {
public:
    /// `monitor` may be null where nobody observes; it, `clock` and `log` must outlive the object.
    LinuxPowerSources(const Sysfs& sysfs, const Clock& clock, Log& log, PowerSupplyMonitor* monitor)
        : reader_(sysfs, log), clock_(clock), monitor_(monitor)
    {
    }

    /// Any thread, one at a time. May take a while: firmware answers when it likes.
    std::vector<PowerSourceDescription> descriptions() override;

    /// Main thread.
    [[nodiscard]] Subscription observeChanges(std::function<void()> changed) override;

private:
    PowerSupplyReader reader_;
    TimeEstimator estimator_;
    std::atomic<bool> isAfresh_ = true; ///< an event came since the last reading
    const Clock& clock_;
    PowerSupplyMonitor* monitor_;
};

} // namespace velmora
