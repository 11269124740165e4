// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/WidgetSettings.h"

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

} // namespace
} // namespace velmora
