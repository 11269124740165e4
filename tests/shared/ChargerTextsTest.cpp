// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Translation.h"
#include "texts/DashboardTexts.h"
#include "texts/WidgetTexts.h"
#include "wire/ChargerInterface.h"

#include <gtest/gtest.h>
#include <set>

namespace velmora {
namespace {

using Control = ChargerReport::Control;
using Thermal = ThermalMonitorService::ThermalState;

/// A charger that does as it was told; -1: it was told nothing.
ChargerReport obedient(std::string_view mode, int start, int end,
                       std::string_view control = Control::thresholds)
{
    return {.hasBattery = true,
            .control = std::string(control),
            .mode = std::string(mode),
            .wantedStartThreshold = start,
            .wantedEndThreshold = end,
            .startThreshold = start,
            .endThreshold = end};
}

std::string reasonOf(const ChargerReport& report)
{
    const auto known = [](std::int64_t value) {
        return value < 0 ? std::nullopt : std::optional(static_cast<int>(value));
    };
    return charger::reason(report.mode, known(report.wantedEndThreshold), known(report.wantedStartThreshold),
                           report.control == Control::fixedLimit);
}

const auto at80 = obedient("auto-protect", 78, 80);
const auto endOnly = obedient("auto-protect", -1, 80, Control::endThreshold);
const auto uncontrolled = obedient("auto-protect", -1, -1, Control::none);
const auto storage = obedient("storage", 48, 50);
const auto quickCharge = obedient("quick charge", 99, 100);
const auto resumed = obedient("resumed", 99, 100);
const auto unlimited = obedient("auto-protect", 98, 100);
const auto paused = obedient("paused", 0, 79);
const auto hot = obedient("paused for heat", 0, 63);
/// The firmware's own limit, on; asked for was 80%.
ChargerReport fixedAt(std::string_view level, std::string_view mode = "auto-protect", int end = -1)
{
    auto report = obedient(mode, -1, end, Control::fixedLimit);
    report.wantedEndThreshold = 80;
    report.fixedLimit = level;
    return report;
}

const auto* const noControl = "This laptop's charger takes no limit from software: it charges to 100%.";
const auto* const stopped = "The background service is not running: the charger keeps its last settings.";

TEST(ChargerTexts, TrayWidgetsAndPagesAgree)
{
    const std::pair<Situation, std::string> cases[] = {
        {{.percentage = 80, .charger = at80},
         "80%, plugged in, held at the limit of 80% | Limit reached | "
         "Holding at 80%: plugged in, limit reached."},
        {{.percentage = 80, .isAutoProtectOn = false, .charger = at80}, // switched off, and refused
         "80%, plugged in, held at the limit of 80% | Limit reached | "
         "Holding at 80%: plugged in, limit reached."},
        {{.percentage = 81, .charger = at80},
         "81%, plugged in, above the limit of 80% | Above the limit | "
         "Not charging: the battery is above the limit of 80%."},
        {{.percentage = 79, .charger = at80},
         "79%, plugged in, charging begins again below 78% | Plugged in | "
         "Resting: plugged in, and charging begins again below 78%."},
        {{.percentage = 60, .charger = at80},
         "60%, plugged in, not charging | Plugged in | "
         "Plugged in, but the battery takes no charge right now."},
        {{.percentage = 76.9, .isCharging = true, .timeToFull = 65, .timeToLimit = 20, .charger = at80},
         "76%, charging, 20m to the limit of 80% | Charging: 20m to limit | "
         "Charging to 80%: Auto-Protect is on."},
        {{.percentage = 70, .isCharging = true, .timeToLimit = 90, .limit = 90, .charger = at80}, // refused
         "70%, charging to 80% | Charging to 80% | Charging to 80%: Auto-Protect is on."},
        {{.percentage = 85, .isCharging = true, .timeToFull = 40, .charger = at80},
         "85%, charging past the limit of 80% | Charging | "
         "Charging past the limit of 80%: the charger does not follow it yet."},
        {{.percentage = 72, .isOnBattery = true, .timeToEmpty = 125, .charger = at80},
         "72%, on battery, 2h 5m remaining | 2h 5m remaining | "
         "On battery: charging will stop at 80%, Auto-Protect is on."},
        {{.percentage = 79, .charger = endOnly},
         "79%, plugged in, not charging | Plugged in | "
         "Resting: plugged in, and the firmware decides when charging begins again."},
        {{.percentage = 70, .isCharging = true, .timeToFull = 65, .timeToLimit = 20, .charger = uncontrolled},
         std::string("70%, charging, 1h 5m to full | Charging: 1h 5m to full | ") + noControl},
        {{.percentage = 70, .charger = fixedAt("55-60", "auto-protect", 60)},
         "70%, plugged in, above the limit of 55-60% | Above the limit | "
         "Not charging: the battery is above the limit of 55-60%."},
        {{.percentage = 85, .charger = fixedAt("55-60 or 80")},
         "85%, plugged in, held by the firmware's own limit | Limit reached | "
         "Holding: plugged in, the firmware's own limit is reached."},
        {{.percentage = 70, .isCharging = true, .timeToLimit = 20, .charger = fixedAt("55-60 or 80")},
         "70%, charging to 55-60% or 80% | Charging to 55-60% or 80% | "
         "Charging to 55-60% or 80%: Auto-Protect is on."},
        {{.percentage = 70, .charger = fixedAt("unknown", "storage")},
         "70%, plugged in, not charging | Plugged in | "
         "Resting: plugged in, and the firmware decides when charging begins again."},
        {{.percentage = 85, .charger = fixedAt("55-60 or 80", "paused")},
         "85%, plugged in, paused by hand | Paused | "
         "Paused by hand, until the next plug or changed setting."},
        {{.percentage = 63, .charger = hot},
         "63%, plugged in, paused until the battery has cooled down | Cooling down | "
         "The battery is hot: charging waits until it has cooled down."},
        {{.percentage = 99.5, .charger = fixedAt("", "quick charge", 100)},
         "99%, plugged in, full | Full | Full: plugged in, quick charge is on."},
        {{.percentage = 40, .isCharging = true, .timeToFull = 65, .timeToLimit = 20, .charger = storage},
         "40%, charging to 50% | Charging to 50% | Charging to 50%: storage mode is on."},
        {{.isCharging = true, .timeToFull = 12, .timeToLimit = 5, .charger = quickCharge},
         "50%, charging, 12m to full | Charging: 12m to full | Charging to 100%: quick charge is on."},
        {{.percentage = 79, .charger = resumed},
         "79%, plugged in, not charging | Plugged in | "
         "Plugged in, but the battery takes no charge right now: it was resumed by hand."},
        {{.isOnBattery = true, .timeToEmpty = -2, .charger = obedient("off", 95, 100)},
         "50%, on battery | Calculating remaining time... | "
         "On battery: charging will go on to 100%, no limit is set."},
        {{.percentage = 79, .charger = paused},
         "79%, plugged in, paused by hand | Paused | "
         "Paused at 79% by hand, until the next plug or changed setting."},
        {{.percentage = 0, .charger = ChargerReport{}},
         "This machine has no battery. | No battery | This machine has no battery."},
        {{.percentage = 80, .isSimulated = true},
         std::string("80%, plugged in, held at the limit of 80% | Limit reached | ") + stopped},
        {{.isCharging = true}, std::string("50%, charging | Background service not running | ") + stopped},
    };
    for (const auto& [now, texts] : cases)
        EXPECT_EQ(charger::tooltip(now, Thermal::nominal) + " | " + widget::statusText(now) + " | " +
                      charger::limiterText(now),
                  texts);
    EXPECT_EQ(charger::tooltip(cases[0].first, Thermal::serious),
              "80%, plugged in, held at the limit of 80%, heat: Serious");
}

TEST(ChargerTexts, TheDaemonSaysWhyItHoldsWhatItHolds)
{
    const std::pair<ChargerReport, const char*> cases[] = {
        {at80, "Auto-Protect is on: charging stops at 80% and begins again below 78%."},
        {endOnly, "Auto-Protect is on: charging stops at 80%."},
        {uncontrolled, noControl},
        {fixedAt("80"), "Auto-Protect is on: charging stops at the firmware's own limit."},
        {storage, "Storage mode is on: charging stops at 50% and begins again below 48%."},
        {quickCharge, "Quick charge is on: charging goes on to 100% once."},
        {resumed, "Resumed by hand, until the next plug or changed setting."},
        {unlimited, "No limit is set: charging goes on to 100%."},
        {obedient("off", 95, 100), "No limit is set: charging goes on to 100%."},
        {paused, "Paused by hand, until the next plug or changed setting."},
    };
    for (const auto& [report, reason] : cases) EXPECT_EQ(reasonOf(report), reason);
}

TEST(ChargerTexts, PagesSayWhatThisLaptopMakesOfTheSettings)
{
    auto rounded = at80;
    rounded.startThreshold = 75;
    rounded.endThreshold = 85;
    auto refused = rounded;
    refused.isRefused = true;
    auto silent = at80;
    silent.startThreshold = silent.endThreshold = -1;
    const auto* const firmwares = "This laptop's firmware decides when charging begins again.";
    const auto* const notNow = "With Auto-Protect charging begins again below 78%.";
    const std::tuple<std::optional<ChargerReport>, const char*, const char*> cases[] = {
        {std::nullopt, stopped, ""},
        {ChargerReport{}, "This machine has no battery.", ""},
        {uncontrolled, noControl, ""},
        {rounded, "In force: 85%, since this laptop does not support 80%.",
         "Charging begins again below 75%."},
        {refused, "Not in force: the charger refused 80%, and stops at 85%.",
         "Charging begins again below 75%."},
        {silent, "The limit was sent to the charger, which does not report it.",
         "Charging begins again below 78%."},
        {endOnly, "In force: the charger stops at 80%.", firmwares},
        {fixedAt("55-60", "auto-protect", 60),
         "In force: 55-60%, the only limit that this laptop's firmware has.", firmwares},
        {fixedAt("55-60 or 80"),
         "In force: the firmware's own limit, 55-60% or 80% by model. It takes no other.", firmwares},
        {fixedAt("what is this"),
         "In force: the firmware's own limit. It does not say where that is, and takes no other.", firmwares},
        {storage, "In force: the charger stops at 50%.", notNow},
        {obedient("auto-protect", -1, -1), "The limit has not been sent to the charger yet.", notNow},
    };
    for (const auto& [charger, limit, start] : cases) {
        EXPECT_EQ(charger::limitEffect({.percentage = 79, .charger = charger}), limit);
        EXPECT_EQ(charger::startEffect({.percentage = 79, .charger = charger}, 80, 2), start);
    }
    EXPECT_EQ(charger::startEffect({.percentage = 79, .charger = obedient("auto-protect", 79, 80)}, 80, 0),
              "Charging begins again below 79%.");
}

TEST(ChargerTexts, EveryRefusalThatConcernsAPersonIsASentenceOfItsOwn)
{
    std::set<std::string> sentences;
    for (const auto* why : refusedTexts)
        if (const auto text = charger::refusalText(why); !text.empty()) sentences.insert(text);
    EXPECT_EQ(sentences.size(), refusedTexts.size() - 1) << "all but one that a newer wish replaced";
    EXPECT_EQ(charger::refusalText(""), "");
}

TEST(ChargerTexts, TheSwitchOfAutoProtectSaysToWhatItLimits)
{
    const std::pair<std::optional<ChargerReport>, const char*> cases[] = {
        {std::nullopt, "Limit to 90% charge"},
        {at80, "Limit to 90% charge"},
        {fixedAt("55-60"), "Limit to 55-60% charge"},
        {fixedAt("55-60 or 80"), "Limit to 55-60% or 80% charge"},
        {fixedAt("unknown"), "Limit chosen by the firmware"},
        {fixedAt("", "off", 100), "Limit chosen by the firmware"},
    };
    for (const auto& [charger, caption] : cases)
        EXPECT_EQ(charger::limitCaption({.limit = 90, .charger = charger}), caption);
}

TEST(DashboardTexts, StatusLineTellsTheTimesThatAreKnown)
{
    const std::tuple<bool, bool, std::int64_t, std::int64_t, std::int64_t, const char*> cases[] = {
        {false, true, 30, 30, 45, "45m remaining"},
        {false, true, -1, -1, -2, "Calculating remaining time..."},
        {false, true, -1, -1, -1, "Live battery analytics and performance monitoring."},
        {false, true, -1, -1, 0, "Live battery analytics and performance monitoring."},
        {true, true, 21, 60, -1, "Charging: 21m to limit"},
        {true, false, 21, 60, -1, "Charging: 1h 0m to full"},
        {true, true, 0, 59, -1, "Charging: 59m to full"},
        {true, true, -1, -2, -1, "Calculating time to full..."},
        {true, true, -1, -1, -2, "Charging..."},
    };
    for (const auto& [isCharging, isLimited, toLimit, toFull, toEmpty, line] : cases)
        EXPECT_EQ(dashboard::statusLine({.isCharging = isCharging,
                                         .timeToFull = toFull,
                                         .timeToEmpty = toEmpty,
                                         .timeToLimit = toLimit,
                                         .isAutoProtectOn = isLimited}),
                  line);
    EXPECT_EQ(dashboard::statusLine({.charger = ChargerReport{}}), "This machine has no battery.");
}

TEST(Translation, PutsValuesWhereTheTranslatedTextWantsThem)
{
    const auto before = setTranslation([](const char* text, const char* many, std::int64_t count) {
        if (many) return std::string(count < 5 ? "few: %1" : "lots: %1");
        return text == std::string_view("%1, charging to %2") ? "%2 <- %1, %3%" : std::string(text);
    });
    EXPECT_EQ(tr("%1, charging to %2", "%2", "80%"), "80% <- %2, %3%");
    EXPECT_EQ(trn("%1 month", "%1 months", 4), "few: 4");
    EXPECT_EQ(tr("100%"), "100%");
    setTranslation(before);
    EXPECT_EQ(trn("%1 month", "%1 months", 1) + trn("%1 month", "%1 months", 0), "1 month0 months");
}

} // namespace
} // namespace velmora
