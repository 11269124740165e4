// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Views.h"

#include <limits>

namespace velmora {
namespace {

using Component = Views;

/// A ring at its limit with that level.
struct Ring : Views {
    QQuickItem* show(double percentage)
    {
        return showComponent("BatteryRing",
                             {{"percentage", percentage},
                              {"isCharging", false},
                              {"isLimitReached", true},
                              {"pulseAlpha", 0.4}},
                             {72, 72});
    }
};

TEST_F(Ring, FollowsTheLevelBeforeTheLimit)
{
    for (const auto& [level, from, fade] : {std::tuple(19.9, "#ff3b30", 0.7), {20, "#007aff", 0.6}}) {
        const auto* ring = show(level);
        ASSERT_TRUE(ring);
        EXPECT_EQ(ring->property("from").value<QColor>().name(), from) << level;
        EXPECT_NEAR(ring->property("to").value<QColor>().alphaF(), fade, 0.01) << level;
        EXPECT_EQ(ring->opacity(), 1);
    }
}

TEST_F(Ring, IsFullOrEmptyForLevelsThatCannotBe)
{
    for (const double level : {1e300, -5.0, std::numeric_limits<double>::quiet_NaN()}) {
        ASSERT_TRUE(show(level));
        const auto picture = window->grabWindow();
        for (const QPoint place : {QPoint(69, 36), {36, 69}, {2, 36}})
            EXPECT_EQ(picture.pixelColor(place) != QColor(Qt::white), level > 0) << level;
    }
}

TEST_F(Component, VisualizerPulsesWhileCharging)
{
    auto* visualizer = showComponent(
        "BatteryVisualizer", {{"percentage", 50}, {"isCharging", true}, {"isLimitReached", false}}, {72, 72});
    ASSERT_TRUE(visualizer);
    const auto* ring = visualizer->findChild<QQuickItem*>("ring");
    EXPECT_TRUE(QTest::qWaitFor([&] { return ring->opacity() == 0.4; }));
    EXPECT_EQ(visualizer->property("boltColor").toString(), "#34c759");
    visualizer->setProperty("isCharging", false);
    EXPECT_EQ(ring->opacity(), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return visualizer->property("pulseAlpha").toDouble() == 1; }));
    visualizer->setProperty("percentage", 20);
    EXPECT_EQ(ring->property("value"), 0.5) << "still on its way, past 20 and back";
    EXPECT_EQ(ring->property("percentage"), 20) << "of which the colour knows nothing";
    EXPECT_TRUE(QTest::qWaitFor([&] { return ring->property("value").toDouble() == 0.2; }));
}

TEST_F(Component, ASwitchShowsWhatIsSoAndOnlyAsks)
{
    auto* row = showComponent(
        "ToggleRow", {{"title", "Storage"}, {"subtitle", "Holds at 50%"}, {"isOn", false}}, {300, 40});
    ASSERT_TRUE(row);
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, {290, 20});
    EXPECT_FALSE(row->property("checked").toBool());
    row->setProperty("isOn", true);
    EXPECT_TRUE(row->property("checked").toBool());
}

} // namespace
} // namespace velmora
