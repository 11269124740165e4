// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "texts/DashboardTexts.h"

#include <string>

/// What the desktop's widgets say, from the model's values alone.
namespace velmora::widget {

/// "72%"; a dash where there is no battery, or nobody reads it.
std::string levelText(const dashboard::Situation& now);

/// "Charging", "On battery": what the battery does, in a word or two.
std::string stateText(const dashboard::Situation& now);

/// The same, and for how long, where that is known.
std::string statusText(const dashboard::Situation& now);

/// The battery's health, "94%"; a dash while nobody has told it.
std::string healthText(const dashboard::Situation& now);

/// A widget in one accessibleName, for those who hear it: "Battery, 72%, charging". The longer one says all
/// that the medium widget shows.
std::string accessibleName(const dashboard::Situation& now);
std::string accessibleSummary(const dashboard::Situation& now,
                              ThermalMonitorService::ThermalState thermalState);

} // namespace velmora::widget
