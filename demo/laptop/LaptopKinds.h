// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "SimulatedLaptop.h"

#include <optional>
#include <span>
#include <string_view>

namespace velmora {

/// The laptops that come without a capture:
/// - "thresholds": one battery with a start and an end threshold
/// - "end-only": one battery with an end threshold
/// - "two-batteries": an internal and a removable one, both with two thresholds
/// - "conservation-mode": one battery whose firmware holds 55 to 60 % while a switch is on, as older IdeaPads
/// - "long-life": one with a charge type that holds 80 %, as newer ones and Legions
/// - "none": a desktop on mains, without a battery
std::span<const std::string_view> laptopKinds();

/// Nothing for a kind that nobody knows.
std::optional<LaptopMake> laptopOfKind(std::string_view kind);

} // namespace velmora
