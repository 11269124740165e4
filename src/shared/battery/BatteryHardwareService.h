// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "battery/BatteryDataSource.h"
#include "platform/Complaints.h"
#include "platform/PowerSources.h"

#include <memory>
#include <optional>
#include <vector>

namespace velmora {

/// This machine's own battery as a source of readings. Every delivery is a fresh reading: one when monitoring
/// starts, one on each change signal and one on each `update`. Without a subscriber nothing is read and no
/// change is waited for. A machine without a battery delivers nothing. Main thread only.
class BatteryHardwareService final : public BatteryDataSource {
public:
    BatteryHardwareService();

    void startMonitoring(Update onUpdate) override;
    void update() override;

    /// The first source of type "InternalBattery" as a state; nothing where there is none.
    ///
    /// Keys are read independently: one that is missing or of another type takes its own default, which is 0
    /// of 100 for the capacities, not charging, "Battery" for the power source and -1 (unknown) for the
    /// minutes. The percentage is neither rounded nor clamped, but where the capacities give no finite one it
    /// is 0, which is raised with `complaints` where given.
    static std::optional<SharedBatteryState>
    stateFromDescriptions(const std::vector<PowerSourceDescription>& sources,
                          Complaints* complaints = nullptr);

private:
    std::shared_ptr<PowerSources> powerSources_;
    Complaints complaints_;
    Update onUpdate_;
    Subscription changes_;
};

} // namespace velmora
