// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

/// The kernel's own word on its generic netlink family "thermal" (include/uapi/linux/thermal.h).
namespace velmora::thermal_family {

/// A message that asks the kernel for the family.
std::string question();

/// The number of the family's group "event" from the answer; nothing where there is no such family or group.
/// `answer` may be anything.
std::optional<std::uint32_t> eventGroup(std::span<const char> answer);

} // namespace velmora::thermal_family
