// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/WidgetSettings.h"
#include "texts/WidgetTexts.h"

#include "FakePlatform.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(WidgetSettings, AreAsTheyWereLeftAndBrokenPlacesAreNone)
{
    FakePlatform machine;
    {
        WidgetSettings small("small");
        small.isPinned.set(true);
        small.place.set(WidgetPlace{-12, 400});
    }
    EXPECT_TRUE(WidgetSettings("small").isPinned.get());
    EXPECT_FALSE(WidgetSettings("small").isShownAtLogIn.get());
    EXPECT_EQ(WidgetSettings("small").place.get(), (WidgetPlace{-12, 400}));
    EXPECT_EQ(WidgetSettings("medium").place.get(), std::nullopt);
    EXPECT_EQ(machine.preferences->assignments, 2) << "what was found is not written back";
    EXPECT_EQ(machine.log->count(), 0U);

    auto& text = machine.preferences->texts.begin()->second;
    for (const auto* broken : {"12", "12,", ",", "12,a", "12,4 ", "1,2,3", "40000,1", "1,-99999999999"}) {
        machine.log->clear();
        text = broken;
        EXPECT_EQ(WidgetSettings("small").place.get(), std::nullopt) << broken;
        EXPECT_EQ(machine.log->count("small widget"), 1U) << broken;
    }
}

TEST(WidgetTexts, SayWhatTheBatteryDoes)
{
    using dashboard::Situation;
    const ChargerReport some{.hasBattery = true};
    ChargerReport known = some;
    known.health = 94.6;
    const struct {
        Situation now;
        const char *state, *status, *accessibleName;
    } cases[] = {
        {{.percentage = 72.9, .isCharging = true, .timeToLimit = 6, .charger = some},
         "Charging",
         "Charging: 6m to limit",
         "Battery, 72%, charging: 6m to limit, health unknown, thermal state fair"},
        {{.percentage = 72, .isOnBattery = true, .timeToEmpty = 125, .charger = known},
         "On battery",
         "2h 5m remaining",
         "Battery, 72%, 2h 5m remaining, health 94%, thermal state fair"},
        {{.percentage = 80, .timeToEmpty = 125, .charger = some},
         "Limit reached",
         "Limit reached",
         "Battery, 80%, limit reached, health unknown, thermal state fair"},
        {{.percentage = 99.2, .isSimulated = true},
         "Full",
         "Full",
         "Battery, 99%, full, health unknown, thermal state fair"},
        {{.percentage = 99.2, .charger = ChargerReport{}},
         "No battery",
         "No battery",
         "Battery: no battery, health unknown, thermal state fair"},
        {{.percentage = 50},
         "Not watched",
         "Background service not running",
         "Battery: background service not running, health unknown, thermal state fair"},
    };
    for (const auto& [now, state, status, accessibleName] : cases) {
        EXPECT_EQ(widget::stateText(now), state);
        EXPECT_EQ(widget::statusText(now), status);
        EXPECT_EQ(widget::accessibleSummary(now, ThermalMonitorService::ThermalState::fair), accessibleName);
    }
    EXPECT_EQ(widget::accessibleName(cases[0].now), "Battery, 72%, charging");
}

} // namespace
} // namespace velmora
