// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/DashboardTexts.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace velmora::dashboard {

namespace {

std::string percent(double value)
{
    return panel::percentageText(value);
}

/// Where the battery is held, and how that reads.
struct Hold {
    double limit;
    double resume; ///< negative: not known
    const char* because;
};

/// What a threshold became; what was asked for where the charger does not tell.
double inForce(std::int64_t held, std::int64_t told)
{
    return static_cast<double>(held >= 0 ? held : told);
}

bool isStartTheFirmwares(const ChargerReport& charger)
{
    return charger.control == ChargerReport::Control::endThreshold;
}

std::string charging(const Situation& now, const Hold& hold)
{
    if (now.percentage < hold.limit) return "Charging to " + percent(hold.limit) + ": " + hold.because + ".";
    return "Charging past the limit of " + percent(hold.limit) + ": the charger does not follow it yet.";
}

std::string resting(const Situation& now, const Hold& hold)
{
    if (now.percentage >= hold.limit + 1)
        return "Not charging: the battery is above the limit of " + percent(hold.limit) + ".";
    if (now.percentage >= hold.limit)
        return "Holding at " + percent(hold.limit) + ": plugged in, limit reached.";
    if (hold.resume < 0) return "Resting: plugged in, and the firmware decides when charging begins again.";
    if (now.percentage >= hold.resume)
        return "Resting: plugged in, and charging begins again below " + percent(hold.resume) + ".";
    return "Plugged in, but the battery takes no charge right now.";
}

std::string held(const Situation& now, const Hold& hold)
{
    if (now.isOnBattery)
        return "On battery: charging will stop at " + percent(hold.limit) + ", " + hold.because + ".";
    return now.isCharging ? charging(now, hold) : resting(now, hold);
}

/// Why no limit can be held here, if so.
std::optional<std::string> obstacle(const Situation& now)
{
    if (!now.charger)
        return "The background service is not running: the charger keeps what it was last told.";
    if (!now.charger->hasBattery) return "This machine has no battery.";
    if (now.charger->control == ChargerReport::Control::none)
        return "This laptop's charger takes no limit from software: it charges to 100%.";
    return std::nullopt;
}

/// Where nothing holds the battery below full.
std::string unheld(const Situation& now, const char* because)
{
    const std::string reason = because;
    if (now.isOnBattery) return "On battery: charging will go on to 100%, " + reason + ".";
    if (now.isCharging) return "Charging to 100%: " + reason + ".";
    if (now.percentage >= full) return "Full: plugged in, " + reason + ".";
    return "Plugged in, but the battery takes no charge right now: " + reason + ".";
}

} // namespace

std::string_view view(std::string_view identifier)
{
    const auto found = std::ranges::find(pages, identifier, &Page::identifier);
    return found == pages.end() ? std::string_view{} : found->view;
}

std::string timeText(std::int64_t minutes)
{
    if (minutes < 60) return std::to_string(minutes) + "m";
    return std::to_string(minutes / 60) + "h " + std::to_string(minutes % 60) + "m";
}

std::string statusLine(const Situation& now)
{
    if (!now.isCharging) {
        if (now.timeToEmpty >= 1) return timeText(now.timeToEmpty) + " remaining";
        return now.timeToEmpty == workingOut ? "Calculating remaining time..."
                                             : "Live battery analytics and performance monitoring.";
    }
    if (now.isAutoProtectOn && now.timeToLimit >= 1)
        return "Charging: " + timeText(now.timeToLimit) + " to limit";
    if (now.timeToFull >= 1) return "Charging: " + timeText(now.timeToFull) + " to full";
    return now.timeToFull == workingOut ? "Calculating time to full..." : "Charging...";
}

bool isWatched(const Situation& now)
{
    return now.isSimulated || (now.charger && now.charger->hasBattery);
}

std::string limiterText(const Situation& now)
{
    if (const auto reason = obstacle(now)) return *reason;
    using Mode = ChargerReport::Mode;
    const auto& charger = *now.charger;
    const double limit = inForce(charger.endThreshold, charger.wantedEndThreshold);
    if (charger.mode == Mode::paused)
        return "Paused" + (limit < 0 ? "" : " at " + percent(limit)) +
               " by hand, until the next plug or changed setting.";
    if (charger.mode == Mode::resumed) return unheld(now, "it was resumed by hand");
    if (charger.mode == Mode::quickCharge) return unheld(now, "quick charge is on");
    const bool isStorage = charger.mode == Mode::storage;
    if (!isStorage && charger.mode != Mode::autoProtect) return unheld(now, "no limit is set");
    if (limit < 0) return "The charger has not been told yet.";
    if (limit >= 100) return unheld(now, "no limit is set");
    const double resume =
        isStartTheFirmwares(charger) ? -1 : inForce(charger.startThreshold, charger.wantedStartThreshold);
    return held(now, {limit, resume, isStorage ? "storage mode is on" : "Auto-Protect is on"});
}

std::string limitEffect(const Situation& now)
{
    if (const auto reason = obstacle(now)) return *reason;
    const auto told = now.charger->wantedEndThreshold;
    const auto held = now.charger->endThreshold;
    if (told < 0) return "The charger has not been told yet.";
    if (held < 0) return "The charger was told, but does not say what it holds.";
    const auto inForce = percent(static_cast<double>(held));
    if (held != told)
        return "In force: " + inForce + ", which this laptop makes of " + percent(static_cast<double>(told)) +
               ".";
    return "In force: the charger stops at " + inForce + ".";
}

std::string startEffect(const Situation& now, double limit, double hysteresis)
{
    if (obstacle(now)) return "";
    const auto& charger = *now.charger;
    if (isStartTheFirmwares(charger)) return "This laptop's firmware decides when charging begins again.";
    const double asked = limit - hysteresis;
    const bool isInForce = charger.mode == ChargerReport::Mode::autoProtect &&
                           static_cast<double>(charger.wantedStartThreshold) == std::round(asked);
    if (!isInForce) return "With Auto-Protect charging begins again below " + percent(asked) + ".";
    return "Charging begins again below " +
           percent(inForce(charger.startThreshold, charger.wantedStartThreshold)) + ".";
}

std::string firstSampleText(const Situation& now)
{
    if (!now.charger) return "No samples: the background service is not running.";
    if (!now.charger->hasBattery) return "No samples: this machine has no battery.";
    return "No samples yet. The first comes as soon as the battery has been read, the next ones about every "
           "quarter of an hour while it charges or drains.";
}

std::string deviceStatus(const SharedBatteryState& device)
{
    if (device.isCharging)
        return device.timeToFull >= 1 ? "Charging, " + timeText(device.timeToFull) + " to full" : "Charging";
    if (device.powerSource != "Battery") return "Plugged in";
    return device.timeToEmpty >= 1 ? "On battery, " + timeText(device.timeToEmpty) + " remaining"
                                   : "On battery";
}

std::string deviceName(const SharedBatteryState& device)
{
    return device.deviceName && !device.deviceName->empty() ? *device.deviceName : "Unnamed machine";
}

} // namespace velmora::dashboard
