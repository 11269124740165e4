// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <optional>
#include <string>

/// What the page about notices says of journeys and the charge before them.
namespace velmora::travel {

struct Situation {
    bool isConsentGiven = false;
    bool isAccessGranted = false;
    bool isDetected = false;
    bool isLastScanWhole = true;        ///< all calendars were read
    std::optional<std::string> title{}; ///< of the event, where it has one
    std::string stage{};                ///< one of TravelCharge::stageTexts
    std::string begins{};               ///< where that is "scheduled": day and time, as a person reads them
};

/// The next journey, or why none is known: "Flight to Lisbon".
std::string journeyText(const Situation& now);
/// What becomes of the charge before it; empty where there is nothing to say.
std::string chargeText(const Situation& now);

} // namespace velmora::travel
