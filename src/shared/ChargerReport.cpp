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

ChargerReport ChargerReport::unarchived(const KeyedArchive& archive)
{
    ChargerReport report;
    report.hasBattery = archive.decodeBool("HasBattery", report.hasBattery);
    report.batteries = archive.decodeText("Batteries", report.batteries);
    report.control = archive.decodeText("Control", report.control);
    report.driver = archive.decodeText("Driver", report.driver);
    report.mode = archive.decodeText("Mode", report.mode);
    report.wantedStartThreshold = archive.decodeInteger("WantedStartThreshold", report.wantedStartThreshold);
    report.wantedEndThreshold = archive.decodeInteger("WantedEndThreshold", report.wantedEndThreshold);
    report.startThreshold = archive.decodeInteger("StartThreshold", report.startThreshold);
    report.endThreshold = archive.decodeInteger("EndThreshold", report.endThreshold);
    report.isChargingAllowed = archive.decodeBool("IsChargingAllowed", report.isChargingAllowed);
    report.lastAction = archive.decodeText("LastAction", report.lastAction);
    report.lastReason = archive.decodeText("LastReason", report.lastReason);
    report.lastActionDate = archive.decodeDate("LastActionDate").value_or(report.lastActionDate);
    report.health = archive.decodeDouble("Health", report.health);
    report.cycleCount = archive.decodeInteger("CycleCount", report.cycleCount);
    return report;
}

} // namespace velmora
