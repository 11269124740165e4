// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/LinuxThermalLevel.h"

#include <algorithm>
#include <string>

namespace velmora {

namespace {

constexpr int nominal = 0;
constexpr int fair = 1;
constexpr int serious = 2;
constexpr int critical = 3;

constexpr int maximumTrips = 64;

/// The lowest trip of each kind, °C.
struct Trips {
    std::optional<double> passive, hot, critical;
};

void lower(std::optional<double>& trip, double celsius)
{
    trip = std::min(trip.value_or(celsius), celsius);
}

Trips readTrips(DeviceAttributes& zone)
{
    Trips trips;
    for (int i = 0; i < maximumTrips; ++i) {
        const auto trip = "trip_point_" + std::to_string(i);
        const auto temperature = zone.integer(trip + "_temp");
        const auto type = zone.fixedText(trip + "_type");
        if (!temperature && !type) break;
        if (!temperature || !type || *temperature < 40'000 || *temperature > 150'000) continue;
        const double celsius = static_cast<double>(*temperature) / 1000;
        if (*type == "passive") lower(trips.passive, celsius);
        if (*type == "hot") lower(trips.hot, celsius);
        if (*type == "critical") lower(trips.critical, celsius);
    }
    return trips;
}

int judge(double celsius, const Trips& trips)
{
    auto ceiling = trips.hot;
    if (trips.critical) lower(ceiling, *trips.critical - 5);
    if (ceiling && celsius >= *ceiling) return critical;
    if (trips.passive)
        return celsius > *trips.passive + 3 ? serious : celsius >= *trips.passive - 5 ? fair : nominal;
    if (ceiling) return celsius >= *ceiling - 5 ? serious : celsius >= *ceiling - 15 ? fair : nominal;
    return nominal;
}

bool isWireless(const std::string& type)
{
    static constexpr const char* cards[] = {"iwlwifi", "wifi", "wlan", "ath1", "mt7", "rtw"};
    return std::ranges::any_of(cards, [&](const char* card) { return type.find(card) != std::string::npos; });
}

int levelOf(DeviceAttributes& zone)
{
    const auto type = zone.fixedText("type");
    if (!type || isWireless(*type) || zone.text("mode") == "disabled") return nominal;
    const auto temperature = zone.integer("temp");
    if (!temperature || *temperature < -40'000 || *temperature > 150'000) return nominal;
    return judge(static_cast<double>(*temperature) / 1000, readTrips(zone));
}

} // namespace

int LinuxThermalLevel::level()
{
    int highest = nominal;
    for (auto& [name, zone] : zones_.look(false)) highest = std::max(highest, levelOf(zone));
    return highest;
}

Subscription LinuxThermalLevel::observeChanges(std::function<void()> changed)
{
    if (!changes_.isObserved()) seen_ = level();
    if (events_ && !kernel_) kernel_ = events_->observe([this] { look(); });
    return changes_.observe(std::move(changed));
}

void LinuxThermalLevel::look()
{
    if (!changes_.isObserved()) return;
    const int now = level();
    if (now == seen_) return;
    seen_ = now;
    changes_.emit();
}

} // namespace velmora
