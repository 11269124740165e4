// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "power/ChargeAttributes.h"
#include "power/DeviceClass.h"

#include <optional>

namespace velmora {

/// The limiters that vendor drivers keep outside class/power_supply: `conservation_mode` of ideapad_laptop
/// (IdeaPad, Yoga, Legion), which acts on every battery of the machine. One thread at a time.
class PlatformLimiters {
public:
    /// `complaints` must outlive the object.
    PlatformLimiters(const Sysfs& sysfs, Complaints& complaints)
        : ideapads_(sysfs, "bus/platform/drivers/ideapad_acpi", complaints, "VPC2004")
    {
    }

    /// Gives `charge` the machine's limiter where the battery has none of its own. `afresh`: what was absent
    /// is looked for again.
    void complete(ChargeAttributes& charge, bool afresh);

private:
    std::optional<FixedLimiter> conservationMode(bool afresh);

    DeviceClass ideapads_;
};

} // namespace velmora
