// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "texts/Situation.h"
#include "thermal/ThermalMonitorService.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The one place where it is decided what the charger does and how that is said. Tray, widgets, dashboard and
/// the daemon's own reason all come from here, so that they agree. What counts is what the daemon reports to
/// be in force: what a user asked for may have been refused, or be more than the laptop can do.
namespace velmora::charger {

/// "45m", "2h 5m".
std::string timeText(std::int64_t minutes);

inline constexpr std::int64_t workingOut = -2; ///< minutes that are not known yet

/// Why the daemon holds the charger as it does, for ChargerReport::lastReason: a sentence. `mode` is a text
/// of ChargerReport::Mode; `end` and `start` are percent. No `end`: the charger takes none. No `start`: the
/// firmware decides. `isFixed`: whatever the `end`, it holds a level of its own.
std::string reason(std::string_view mode, std::optional<int> end, std::optional<int> start,
                   bool isFixed = false);

/// Below the switch of Auto-Protect: the limit that the user asked for, or what stands in for it where the
/// laptop has a limit of its own.
std::string limitCaption(const Situation& now);

/// What the limiter does right now, and why; a sentence.
std::string limiterText(const Situation& now);

/// Which limit this laptop's charger holds for the wanted one; a sentence.
std::string limitEffect(const Situation& now);

/// When charging begins again with these two settings, be they in force or not yet; a sentence, or nothing
/// where that has no meaning.
std::string startEffect(const Situation& now, double limit, double hysteresis);

/// Why a change was refused, and what helps; `why` is one of velmora::refusedTexts. Empty where there is
/// nothing to say.
std::string refusalText(std::string_view why);

/// What the battery does, in a word or two: "Charging", "Limit reached".
std::string stateText(const Situation& now);

/// The same, and for how long, where that is known.
std::string statusText(const Situation& now);

/// Level and state in one line: "76%, charging, 12m to the limit of 80%".
std::string tooltip(const Situation& now, ThermalMonitorService::ThermalState thermalState);

} // namespace velmora::charger
