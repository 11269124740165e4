// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SymbolProvider.h"
#include "symbols/SymbolPaths.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <gtest/gtest.h>
#include <limits>

void qml_register_types_Velmora();

namespace velmora {
namespace {

int inked(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) count += qAlpha(image.pixel(x, y)) > 127;
    return count;
}

TEST(Symbols, AllAreDrawnInTheirBoxAndComposedOnesHaveTheirHoles)
{
    for (const auto& symbol : symbols::table) {
        const auto share = inked(symbolImage(symbol.name, 64, Qt::black, Qt::black)) / 4096.0;
        EXPECT_GT(share, 0.08) << symbol.name;
        EXPECT_LT(share, 0.75) << symbol.name;
    }
    const auto shield = symbolImage("bolt.shield.fill", 256, Qt::red, Qt::blue);
    EXPECT_EQ(qAlpha(shield.pixel(128, 122)), 0);                                  // the bolt
    EXPECT_GT(shield.pixelColor(48, 56).red(), shield.pixelColor(160, 190).red()); // top left to bottom right
    const auto bell = symbolImage("bell.badge.fill", 256, Qt::black, Qt::black);
    EXPECT_EQ(qAlpha(bell.pixel(192, 56)), 255);
    EXPECT_EQ(qAlpha(bell.pixel(152, 64)), 0); // between badge and bell
}

TEST(Symbols, WhatIsUnknownIsTransparentAndNamedInTheLog)
{
    static QStringList log;
    const auto before = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& line) { log << line; });
    SymbolProvider provider;
    for (const auto* id : {"no.such/ff000000", "bolt.fill/red?", "bolt.fill", ""}) {
        QSize size;
        EXPECT_EQ(inked(provider.requestImage(id, &size, {20, 20})), 0) << id;
        EXPECT_EQ(size, QSize(20, 20));
        EXPECT_EQ(log.value(log.size() - 1), QStringLiteral("No symbol \"%1\"").arg(id));
    }
    qInstallMessageHandler(before);
    EXPECT_EQ(provider.requestImage("circle/ff000000", nullptr, {1 << 20, 1}).width(), 1024);
}

/// A component of the module, on its own in a window.
class Component : public testing::Test {
protected:
    QQuickItem* make(const char* name, const QVariantMap& properties, QSize size)
    {
        qml_register_types_Velmora();
        engine.addImportPath("qrc:/qt/qml");
        QQmlComponent component(&engine, QUrl(QStringLiteral("qrc:/qt/qml/Velmora/%1.qml").arg(name)));
        item.reset(qobject_cast<QQuickItem*>(component.createWithInitialProperties(properties)));
        if (!item) return ADD_FAILURE() << component.errorString().toStdString(), nullptr;
        item->setSize(size);
        item->setParentItem(window.contentItem());
        window.resize(size);
        window.setColor(Qt::white);
        window.show();
        return QTest::qWaitForWindowExposed(&window) ? item.get() : nullptr;
    }

    QQmlEngine engine;
    std::unique_ptr<QQuickItem> item;
    QQuickWindow window; // goes first, and takes with it what was painted
};

TEST_F(Component, RingsGradientFollowsChargingThenLevelThenLimit)
{
    const struct {
        double percentage;
        bool charging;
        bool limit;
        const char* from;
        double fade;
        double opacity;
    } cases[] = {
        {10, true, true, "#34c759", 0.7, 0.4},
        {19.9, false, true, "#ff3b30", 0.7, 1},
        {20, false, true, "#007aff", 0.6, 1},
        {20, false, false, "#007aff", 0.8, 1},
    };
    for (const auto& [percentage, charging, limit, from, fade, opacity] : cases) {
        const auto* ring = make("BatteryRing",
                                {{"percentage", percentage},
                                 {"isCharging", charging},
                                 {"isLimitReached", limit},
                                 {"pulseAlpha", 0.4}},
                                {72, 72});
        ASSERT_TRUE(ring);
        EXPECT_EQ(ring->property("from").value<QColor>().name(), from) << percentage;
        EXPECT_NEAR(ring->property("to").value<QColor>().alphaF(), fade, 0.01) << percentage;
        EXPECT_EQ(ring->opacity(), opacity);
    }
}

TEST_F(Component, RingCoversItsShareFromTheTop)
{
    const auto nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double percentage;
        bool right;
        bool bottom;
        bool left;
    } cases[] = {
        {0, false, false, false},   {40, true, false, false},  {60, true, true, false},
        {100, true, true, true},    {1e300, true, true, true}, {-5, false, false, false},
        {nan, false, false, false},
    };
    for (const auto& [percentage, right, bottom, left] : cases) {
        ASSERT_TRUE(make(
            "BatteryRing",
            {{"percentage", percentage}, {"isCharging", false}, {"isLimitReached", false}, {"pulseAlpha", 1}},
            {72, 72}));
        const auto picture = window.grabWindow();
        const auto has = [&](int x, int y) { return picture.pixelColor(x, y) != QColor(Qt::white); };
        EXPECT_EQ((std::array{has(69, 36), has(36, 69), has(2, 36)}), (std::array{right, bottom, left}))
            << percentage;
    }
}

TEST_F(Component, VisualizerPulsesWhileCharging)
{
    auto* visualizer = make("BatteryVisualizer",
                            {{"percentage", 50}, {"isCharging", true}, {"isLimitReached", false}}, {72, 72});
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
    auto* row =
        make("ToggleRow", {{"title", "Storage"}, {"subtitle", "Holds at 50%"}, {"isOn", false}}, {300, 40});
    ASSERT_TRUE(row);
    QTest::mouseClick(&window, Qt::LeftButton, {}, {290, 20});
    EXPECT_FALSE(row->property("checked").toBool());
    row->setProperty("isOn", true);
    EXPECT_TRUE(row->property("checked").toBool());
}

} // namespace
} // namespace velmora
