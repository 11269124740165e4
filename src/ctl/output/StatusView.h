// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/Snapshot.h"
#include "output/Json.h"
#include "texts/Situation.h"
#include "thermal/ThermalMonitorService.h"

#include <string>
#include <string_view>

/// What the daemon tells, for a person and for scripts.
namespace velmora::ctl {

/// As the texts of panel and pages take it.
Situation situationOf(const Snapshot& now);

/// One screen of lines.
std::string statusText(const Snapshot& now);

/// Records under the names that they have on the bus; dates in UTC.
Json statusJson(const Snapshot& now);

/// Nominal for a text that is none of the four.
ThermalMonitorService::ThermalState heatOf(std::string_view text);

} // namespace velmora::ctl
