// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "texts/Situation.h"

#include <optional>
#include <string>

/// What the page of the notices says: whether anybody shows them, and what is worth one on this laptop.
namespace velmora::notices {

/// Who shows notices; a sentence. See NotificationStatus.
std::string serverText(const std::string& server, bool isStartable, bool isInhibited);

/// What came of a test notice; nothing while there is nothing to say.
std::string testText(const std::optional<std::string>& result, bool isInhibited);

/// When a notice was sent; `date` as it is shown. Nothing for none.
std::string lastText(const std::string& date);

/// Charging waits here for a hot battery to cool down, as far as is known.
bool pausesForHeat(const Situation& now);
/// Below the switch of that notice.
std::string heatCaption(const Situation& now);

/// The laptop counts its battery's charge cycles, as far as is known.
bool countsCycles(const Situation& now);
/// Below the switch of that notice.
std::string cycleCaption(const Situation& now);

} // namespace velmora::notices
