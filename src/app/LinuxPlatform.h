// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "platform/Platform.h"
#include "power/LinuxThermalLevel.h"
#include "power/PowerSupplyMonitor.h"

#include <memory>
#include <string>
#include <systemd/sd-bus.h>

namespace velmora {

/// The core's ports on this machine, installed as the current platform for as long as it lives. One a
/// program.
class LinuxPlatform {
public:
    /// `program` is the name under which it logs.
    explicit LinuxPlatform(const std::string& program);
    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    /// Makes the ports that reach other programs of the session, over its bus; null: none. To be called
    /// before anything is created on the platform. The connection may end first.
    void useSession(sd_bus* session);

    /// The machine may be hotter or cooler than before: who wants to know is told.
    void lookAtHeat() { thermal_->look(); }

    EventLoop& loop() { return *loop_; }
    Clock& clock() { return *platform_.clock; }
    Log& log() { return *platform_.log; }

private:
    std::shared_ptr<EventLoop> loop_;
    std::unique_ptr<PowerSupplyMonitor> monitor_;
    std::unique_ptr<ThermalEvents> thermalEvents_;
    std::shared_ptr<LinuxThermalLevel> thermal_;
    std::shared_ptr<void> installed_; // before the platform, so that it ends after the singletons
    Platform platform_;
};

} // namespace velmora
