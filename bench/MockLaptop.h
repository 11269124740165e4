// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Handle.h"

#include <string>
#include <umockdev.h>

namespace velmora {

/// A laptop with a battery, a charger and both thresholds, as umockdev shows it to the programs started with
/// its environment: a /sys of its own and kernel events of its own. Needs umockdev-wrapper around this
/// program.
class MockLaptop {
public:
    /// On battery, at `level` percent.
    explicit MockLaptop(int level);

    /// The folder that UMOCKDEV_DIR names for whoever shall run on this laptop.
    std::string root() const;

    /// The battery drains to `level`; nothing is announced yet.
    void drainTo(int level);
    /// The battery gives so much; nothing is announced yet.
    void drawPower(int milliwatts);
    /// Plugged in and full up to the limit: the firmware holds. Announced.
    void holdOnMains();
    /// The kernel's change event of the battery.
    void announceBattery() { announce(battery_); }

private:
    void announce(const std::string& device);
    void set(const std::string& device, const char* attribute, const std::string& value);

    Handle<UMockdevTestbed, g_object_unref> testbed_{umockdev_testbed_new()};
    std::string battery_, mains_; ///< their paths under /sys
};

} // namespace velmora
