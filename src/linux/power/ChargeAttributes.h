// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velmora {

/// A limit that is either on or off, at a level that the firmware's maker chose.
struct FixedLimiter {
    std::filesystem::path file; ///< the attribute, relative to the root
    std::string on, off;        ///< what is written to it; `off` is what it shows while it is off
    std::optional<bool> isOn{}; ///< absent where that cannot be read
    std::string module{};       ///< the kernel module that made it; empty where the file does not tell
};

/// What a battery's driver lets the charger be told: thresholds, or else a limiter that is on or off, or else
/// nothing.
struct ChargeAttributes {
    std::string startFile, endFile; ///< the attributes' names; empty where there is none
    std::optional<int> start, end;  ///< percent, 0 to 100; absent where that cannot be read
    /// False where the driver has a charge type that obeys thresholds ("Custom"), and another one is active.
    bool isObeyed = true;
    std::optional<FixedLimiter> fixed{}; ///< only where there is no end threshold
};

} // namespace velmora
