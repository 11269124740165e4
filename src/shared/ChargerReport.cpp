// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ChargerReport.h"

namespace velmora {

KeyedArchive ChargerReport::archived() const
{
    KeyedArchive archive;
    archive.encode("HasBattery", hasBattery);
    archive.encode("Batteries", batteries);
    archive.encode("Control", control);
    archive.encode("Driver", driver);
    archive.encode("Mode", mode);
    archive.encode("WantedStartThreshold", wantedStartThreshold);
    archive.encode("WantedEndThreshold", wantedEndThreshold);
    archive.encode("StartThreshold", startThreshold);
    archive.encode("EndThreshold", endThreshold);
    archive.encode("IsChargingAllowed", isChargingAllowed);
    archive.encode("LastAction", lastAction);
    archive.encode("LastReason", lastReason);
    archive.encode("LastActionDate", lastActionDate);
    archive.encode("Health", health);
    archive.encode("CycleCount", cycleCount);
    return archive;
}

} // namespace velmora
