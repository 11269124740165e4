// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/Snapshot.h"

#include <optional>
#include <string>

namespace velmora::ctl {

/// One line for a status bar. Nothing: there is no daemon that tells. As JSON it is an object with "text",
/// "tooltip", "class" and "percentage", where the class is one of "charging", "discharging", "held" (at the
/// limit), "paused", "full", "plugged", "no-battery" and "no-daemon"; the last two have no percentage.
std::string watchLine(const std::optional<Snapshot>& now, bool isJson);

} // namespace velmora::ctl
