// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Translation.h"
#include "texts/ChargerTexts.h"
#include "texts/PanelTexts.h"

#include <array>
#include <string>
#include <string_view>

/// What the dashboard says and which pages it has, from the model's values alone.
namespace velmora::dashboard {

/// A page and the sidebar's link to it.
struct Page {
    const char* section; ///< English, as is the title
    const char* title;
    std::string_view icon; ///< symbol name
    panel::ThemeColor color;
    std::string_view identifier;
    std::string_view view; ///< the component that shows it
};

/// In the order of the sidebar; pages of a section stand together.
inline constexpr std::array pages{
    Page{trMark("Intelligence"), trMark("Overview"), "chart.bar.fill", panel::ThemeColor::accent, "Overview",
         "OverviewView"},
    Page{trMark("Intelligence"), trMark("Health Trends"), "bolt.heart.fill", panel::ThemeColor::batteryGreen,
         "Health", "HealthTrendsView"},
    Page{trMark("Intelligence"), trMark("Thermal History"), "thermometer", panel::ThemeColor::orange,
         "Thermal", "ThermalHistoryView"},
    Page{trMark("Intelligence"), trMark("Ecosystem Sync"), "iphone.radiowaves.left.and.right",
         panel::ThemeColor::blue, "Ecosystem", "EcosystemView"},
    Page{trMark("Settings"), trMark("Thresholds"), "slider.horizontal.3", panel::ThemeColor::secondary,
         "Settings", "ThresholdsView"},
    Page{trMark("Settings"), trMark("Notifications"), "bell.badge.fill", panel::ThemeColor::batteryDanger,
         "Notifications", "NotificationsView"},
};

/// The component that shows this page; empty where there is no such page, which shows `placeholder`.
std::string_view view(std::string_view identifier);

inline constexpr auto placeholder = trMark("Select an item to view insights"); ///< English

/// Which program this is, and on what terms one has it.
std::string aboutText();

using charger::limitEffect;
using charger::limiterText;
using charger::refusalText;
using charger::startEffect;
using velmora::isWatched;
using velmora::Situation;

/// Below the title of the overview.
std::string statusLine(const Situation& now);

/// When the first sample of the history comes, or why none does.
std::string firstSampleText(const Situation& now);

} // namespace velmora::dashboard
