// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Observable.h"
#include "platform/Complaints.h"
#include "platform/ThermalLevel.h"
#include "power/DeviceClass.h"
#include "power/ThermalEvents.h"

#include <functional>

namespace velmora {

/// The kernel's thermal zones against their own trip points (Documentation/ABI/testing/sysfs-class-thermal).
/// The kernel has no such scale: it is a policy, and this is all of it.
///
/// **A zone counts** when its `mode` is not "disabled", its temperature can be read and lies from -40 to 150
/// °C, and it has a trip that counts. Zones of wireless cards never do: the card slows itself down, and its
/// trips are seldom set.
///
/// **A trip counts** from 40 to 150 °C; firmware writes 0, absolute zero and the like for "unset". `active`
/// trips start fans, which is nothing to worry about, and are passed over. Of several of a kind the lowest
/// counts.
///
/// **The level.** Critical: at `hot`, or within 5 °C of `critical`, where the kernel switches off; call that
/// the ceiling. With a `passive` trip, where the processor is slowed to stay there: fair from 5 °C below it,
/// serious more than 3 °C above it, as then slowing did not help. Without one: serious within 5 °C of the
/// ceiling, fair within 15. The hottest zone's level is the machine's.
class LinuxThermalLevel final : public ThermalLevel {
public:
    /// Listens to `events`, where given, once somebody observes; they must outlive this.
    LinuxThermalLevel(const Sysfs& sysfs, Log& log, ThermalEvents* events = nullptr)
        : complaints_(log, "LinuxThermalLevel"),
          zones_(sysfs, "class/thermal", complaints_, "thermal_zone"),
          events_(events)
    {
    }

    /// Any thread, one at a time.
    int level() override;

    /// The kernel announces that a trip was crossed, where it announces anything: between two trips nothing
    /// is heard unless `look` is called now and then. On its thread.
    [[nodiscard]] Subscription observeChanges(std::function<void()> changed) override;

    /// Reads the level and tells the observers if it is another than at the last look. Without observers it
    /// reads nothing.
    void look();

private:
    Complaints complaints_;
    DeviceClass zones_;
    ThermalEvents* events_;
    Signal<> changes_;
    int seen_ = 0;
    Subscription kernel_; ///< last: what it calls outlives it
};

} // namespace velmora
