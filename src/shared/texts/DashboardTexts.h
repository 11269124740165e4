// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "battery/BatteryDataSource.h"
#include "texts/PanelTexts.h"
#include "wire/ChargerReport.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What the dashboard says and which pages it has, from the model's values alone.
namespace velmora::dashboard {

/// A page and the sidebar's link to it.
struct Page {
    std::string_view section;
    std::string_view title;
    std::string_view icon; ///< symbol name
    panel::ThemeColor color;
    std::string_view identifier;
    std::string_view view; ///< the component that shows it
};

/// In the order of the sidebar; pages of a section stand together.
inline constexpr std::array pages{
    Page{"Intelligence", "Overview", "chart.bar.fill", panel::ThemeColor::accent, "Overview", "OverviewView"},
    Page{"Intelligence", "Health Trends", "bolt.heart.fill", panel::ThemeColor::batteryGreen, "Health",
         "HealthTrendsView"},
    Page{"Intelligence", "Thermal History", "thermometer", panel::ThemeColor::orange, "Thermal",
         "ThermalHistoryView"},
    Page{"Intelligence", "Ecosystem Sync", "iphone.radiowaves.left.and.right", panel::ThemeColor::blue,
         "Ecosystem", "EcosystemView"},
    Page{"Settings", "Thresholds", "slider.horizontal.3", panel::ThemeColor::secondary, "Settings",
         "ThresholdsView"},
    Page{"Settings", "Notifications", "bell.badge.fill", panel::ThemeColor::batteryDanger, "Notifications",
         "NotificationsView"},
};

/// The component that shows this page; empty where there is no such page, which shows `placeholder`.
std::string_view view(std::string_view identifier);

inline constexpr std::string_view placeholder = "Select an item to view insights";

/// "45m", "2h 5m".
std::string timeText(std::int64_t minutes);

inline constexpr std::int64_t workingOut = -2; ///< minutes that are not known yet
inline constexpr double full = 99;             ///< percent; many a battery stops there

/// What the battery does and what it was told to do.
struct Situation {
    double percentage = 50;
    bool isCharging = false;
    bool isOnBattery = false;
    std::int64_t timeToFull = -1; ///< minutes; -1 unknown, -2 still being worked out
    std::int64_t timeToEmpty = -1;
    std::int64_t timeToLimit = -1;
    bool isAutoProtectOn = true;
    double limit = 80; ///< percent
    /// What the daemon tells of the charger; nothing while it is not there.
    std::optional<ChargerReport> charger{};
    bool isSimulated = false; ///< of a battery that there is not
};

/// The values are those of a battery, and not what a model begins with.
bool isWatched(const Situation& now);

/// Below the title of the overview.
std::string statusLine(const Situation& now);

/// One sentence: what the limiter does right now, and why, as the daemon tells it. What a person asked for
/// may have been refused.
std::string limiterText(const Situation& now);

/// What this laptop's charger makes of the limit that it was told; a sentence.
std::string limitEffect(const Situation& now);
/// When charging begins again with these two settings, be they in force or not yet; a sentence, or nothing
/// where that has no meaning.
std::string startEffect(const Situation& now, double limit, double hysteresis);

/// When the first sample of the history comes, or why none does.
std::string firstSampleText(const Situation& now);

/// What one of the user's machines does.
std::string deviceStatus(const SharedBatteryState& device);
std::string deviceName(const SharedBatteryState& device);

} // namespace velmora::dashboard
