// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "battery/BatteryDataSource.h"
#include "platform/MainLoop.h"

#include <chrono>

namespace velmora {

/// This machine's state as its record in the fleet has it, read once a minute, in place of its hardware.
/// Without a record, or where it cannot be read, nobody is called. Main thread only.
class CloudBatteryService final : public BatteryDataSource {
public:
    static constexpr std::chrono::seconds refreshInterval{60};

    void startMonitoring(Update onUpdate) override;
    void update() override;

private:
    Lifetime lifetime_;
    Update callback_;
    MainLoop::Timer timer_;
};

} // namespace velmora
