// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "wire/ChargerReport.h"

namespace velmora {

namespace {

/// Each property with its value, in the order in which they stand on the bus.
template <typename Report, typename Visit>
void forEachProperty(Report& report, Visit&& visit)
{
    visit("HasBattery", report.hasBattery);
    visit("Batteries", report.batteries);
    visit("Control", report.control);
    visit("Driver", report.driver);
    visit("Mode", report.mode);
    visit("WantedStartThreshold", report.wantedStartThreshold);
    visit("WantedEndThreshold", report.wantedEndThreshold);
    visit("StartThreshold", report.startThreshold);
    visit("EndThreshold", report.endThreshold);
    visit("IsChargingAllowed", report.isChargingAllowed);
    visit("LastAction", report.lastAction);
    visit("LastReason", report.lastReason);
    visit("LastActionDate", report.lastActionDate);
    visit("Health", report.health);
    visit("CycleCount", report.cycleCount);
}

/// Replaces a value by the archived one, where there is one of its type.
struct Reader {
    const KeyedArchive& archive;

    void operator()(const char* key, bool& value) const { value = archive.decodeBool(key, value); }
    void operator()(const char* key, std::int64_t& value) const { value = archive.decodeInteger(key, value); }
    void operator()(const char* key, double& value) const { value = archive.decodeDouble(key, value); }
    void operator()(const char* key, std::string& value) const { value = archive.decodeText(key, value); }
    void operator()(const char* key, Date& value) const { value = archive.decodeDate(key).value_or(value); }
};

} // namespace

KeyedArchive ChargerReport::archived() const
{
    KeyedArchive archive;
    forEachProperty(*this, [&](const char* key, const auto& value) { archive.encode(key, value); });
    return archive;
}

ChargerReport ChargerReport::unarchived(const KeyedArchive& archive)
{
    ChargerReport report;
    forEachProperty(report, Reader{archive});
    return report;
}

} // namespace velmora
