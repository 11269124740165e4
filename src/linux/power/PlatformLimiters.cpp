// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/PlatformLimiters.h"

#include "base/Text.h"

#include <system_error>

namespace velmora {

namespace {
constexpr auto attribute = "conservation_mode";
}

void PlatformLimiters::complete(ChargeAttributes& charge, bool afresh)
{
    if (charge.endFile.empty() && !charge.fixed) charge.fixed = conservationMode(afresh);
}

std::optional<FixedLimiter> PlatformLimiters::conservationMode(bool afresh)
{
    for (auto& [name, device] : ideapads_.look(afresh)) {
        const auto read = device.read(attribute);
        if (read.isAbsent()) continue;
        const auto value = trimmed(read.text);
        FixedLimiter limiter{
            .file = device.path(attribute), .on = "1", .off = "0", .module = "ideapad_laptop"};
        if (value == "0" || value == "1") {
            limiter.isOn = value == "1";
        } else {
            device.complain(attribute,
                            (read.error ? "cannot be read: " + std::generic_category().message(read.error)
                                        : "is '" + value.substr(0, 40) + "', neither 0 nor 1") +
                                "; whether it is on stays unknown");
        }
        return limiter;
    }
    return std::nullopt;
}

} // namespace velmora
