// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "texts/ChargerTexts.h"

#include <string>

/// What the desktop's widgets say, from the model's values alone.
namespace velmora::widget {

using charger::stateText;
using charger::statusText;

/// "72%"; a dash where there is no battery, or no daemon reads it.
std::string levelText(const Situation& now);

/// The battery's health, "94%"; a dash where it is not known.
std::string healthText(const Situation& now);

/// For those who hear the small widget: "Battery, 72%, Charging".
std::string accessibleName(const Situation& now);
/// All that the medium widget shows, in sentences.
std::string accessibleSummary(const Situation& now, ThermalMonitorService::ThermalState thermalState);

} // namespace velmora::widget
