// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Views.h"
#include "program/Requests.h"

namespace velmora {
namespace {

/// The panel in a window, over a model that grants whatever it is asked.
struct Panel : Views {
    using Views::Views;

    void SetUp() override
    {
        QObject::connect(&model, &RemoteModel::setWanted, [this](const QString& key, const QVariant& value) {
            asked << key + "=" + value.toString();
            model.apply({{key, value}});
        });
        QObject::connect(&model, &RemoteModel::operationWanted, [this](const QString& operation) {
            asked << operation;
            model.apply({{"isTemporaryOverrideEnabled", !model.isTemporaryOverrideEnabled()}});
        });
        auto* requests = singleton<Requests>("Requests");
        QObject::connect(requests, &Requests::dashboardWanted, [this] { asked << "dashboard"; });
        QObject::connect(requests, &Requests::quitWanted, [this] { asked << "quit"; });
        QObject::connect(requests, &Requests::alignmentTapWanted, [this] { ++taps; });

        panel = showComponent(
            "MenuBarView", {{"battery", QVariant::fromValue(&model)}, {"backgroundOpacity", 1}}, {320, 450});
        ASSERT_TRUE(panel);
        panel->forceActiveFocus();
        QObject::connect(panel, SIGNAL(dismissed()), window.get(), SLOT(close()));
    }

    QObject* menu() const { return panel->findChild<QObject*>("thresholds"); }
    QQuickItem* line(int at) const
    {
        QQuickItem* found = nullptr;
        QMetaObject::invokeMethod(menu(), "itemAt", Q_RETURN_ARG(QQuickItem*, found), Q_ARG(int, at));
        return found;
    }
    QQuickItem* sheet() const { return menu()->property("contentItem").value<QQuickItem*>(); }
    bool isMenuOpen() const { return menu()->property("opened").toBool(); }

    QString focused() const
    {
        return window->activeFocusItem() ? window->activeFocusItem()->objectName() : QString();
    }

    QStringList asked;
    int taps = 0;
    QQuickItem* panel = nullptr;
};

TEST_F(Panel, ShowsWhatTheModelHolds)
{
    const std::tuple<const char*, QVariant, const char*, const char*, const char*> cases[] = {
        {"percentage", 79.6, "percentage", "text", "79%"},
        {"chargingState", "Charging", "chargingWord", "text", "Charging"},
        {"chargingState", "Charging", "chargingDot", "color", "#34c759"},
        {"chargingState", "Idle", "chargingWord", "text", "Idle"},
        {"chargingState", "Idle", "chargingDot", "color", "#99000000"},
        {"isTemporaryOverrideEnabled", false, "quickCharge", "text", "Quick Charge to 100%"},
        {"isTemporaryOverrideEnabled", true, "quickCharge", "text", "Stop Quick Charge"},
        {"isTemporaryOverrideEnabled", true, "quickCharge", "symbol", "bolt.slash.fill"},
        {"thermalState", "Nominal", "thermal", "valueColor", "#007aff"},
        {"thermalState", "Critical", "thermal/value", "text", "Critical"},
        {"thermalState", "Critical", "thermal", "valueColor", "#ff3b30"},
        {"isAppleRecommendedModeEnabled", false, "healthyPill", "visible", "false"},
        {"isAppleRecommendedModeEnabled", true, "healthyPill", "visible", "true"},
        {"customChargeLimit", 90.0, "autoProtect/caption", "text", "Limit to 90% charge"},
        {"isSimulationModeEnabled", true, "simulation", "isOn", "true"},
        {"isSimulationModeEnabled", true, "degradation/value", "text", "94%"}, // no history: no rate
    };
    for (const auto& [key, value, path, shown, expected] : cases) {
        model.apply({{key, value}});
        EXPECT_EQ(property(path, shown), expected) << key << " " << value.toString().toStdString();
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return property("quickCharge", "tint") == "#ff9900"; })); // gently
}

TEST_F(Panel, EveryControlAnswersToMouseAndKeyboard)
{
    const std::pair<const char*, QStringList> controls[] = {
        // top to bottom, as Tab goes
        {"quickCharge", {"toggleTemporaryOverride"}},
        {"autoProtect", {"isAppleRecommendedModeEnabled=false"}},
        {"simulation", {"isSimulationModeEnabled=true"}},
        {"launchDashboard", {"dashboard"}},
        {"gear", {}},
        {"power", {"quit"}},
    };
    const auto untouched = [&] {
        asked.clear();
        model.apply({{"isAppleRecommendedModeEnabled", true}, {"isSimulationModeEnabled", false}});
    };
    EXPECT_EQ(focused(), "quickCharge");
    EXPECT_FALSE(item("quickCharge")->property("visualFocus").toBool()) << "nobody has pressed a key";
    press(Qt::Key_Backtab);
    for (const auto& [name, expected] : controls) {
        SCOPED_TRACE(name);
        press(Qt::Key_Tab);
        EXPECT_EQ(focused(), name);
        EXPECT_TRUE(item(name)->property("visualFocus").toBool());
        for (const int way : {int(Qt::Key_Space), int(Qt::Key_Return), 0}) {
            untouched();
            way ? press(way) : click(name);
            EXPECT_EQ(asked, expected);
            if (isMenuOpen()) press(Qt::Key_Escape);
        }
        item(name)->forceActiveFocus(Qt::TabFocusReason); // which a click on some of them leaves elsewhere
    }
}

TEST_F(Panel, MenuIsWalkedByKeyboardAndEscapeClosesItFirst)
{
    item("gear")->forceActiveFocus(Qt::TabFocusReason);
    for (const auto key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}) press(key);
    for (const auto key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Return}) press(key); // from the tick
    for (const auto key : {Qt::Key_Space, Qt::Key_End, Qt::Key_Return}) press(key);
    for (const auto key : {Qt::Key_Space, Qt::Key_Home, Qt::Key_Return}) press(key);
    EXPECT_EQ(asked, (QStringList{"customChargeLimit=90", "customChargeLimit=100", "dashboard",
                                  "customChargeLimit=80"}));

    press(Qt::Key_Space);
    ASSERT_TRUE(isMenuOpen());
    press(Qt::Key_Escape);
    EXPECT_FALSE(isMenuOpen());
    EXPECT_EQ(focused(), "gear");
    EXPECT_TRUE(window->isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(Panel, TapsWheneverAutoProtectChanges)
{
    model.apply({{"isAppleRecommendedModeEnabled", true}, {"percentage", 12.0}});
    EXPECT_EQ(taps, 0);
    click("autoProtect");
    EXPECT_EQ(taps, 1);
    model.apply({{"isAppleRecommendedModeEnabled", true}}); // somebody else's doing
    EXPECT_EQ(taps, 2);
}

TEST_F(Panel, AReaderHearsNamesRolesAndStates)
{
    const std::tuple<const char*, QAccessible::Role, const char*> cases[] = {
        {"percentage", QAccessible::StaticText, "50%"},
        {"chargingWord", QAccessible::StaticText, "Idle"},
        {"quickCharge", QAccessible::Button, "Quick Charge to 100%"},
        {"degradation", QAccessible::StaticText, "Degradation rate: 94%"},
        {"thermal", QAccessible::StaticText, "Thermal: Nominal"},
        {"autoProtect", QAccessible::CheckBox, "Auto-Protect"},
        {"simulation", QAccessible::CheckBox, "Demo Simulation"},
        {"gear", QAccessible::Button, "Settings"},
        {"power", QAccessible::Button, "Quit Velmora"},
    };
    const auto act = [](QAccessibleInterface* on) {
        on->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    };
    for (const auto& [path, role, name] : cases) {
        EXPECT_EQ(voice(path)->role(), role) << path;
        EXPECT_EQ(voice(path)->text(QAccessible::Name), name);
    }
    EXPECT_TRUE(voice("autoProtect")->state().checked);
    for (const auto* path : {"quickCharge", "autoProtect", "power", "gear"}) act(voice(path));
    EXPECT_FALSE(voice("autoProtect")->state().checked);
    ASSERT_TRUE(isMenuOpen());
    EXPECT_EQ(QAccessible::queryAccessibleInterface(sheet()->parentItem())->text(QAccessible::Name),
              "Settings");
    for (const int at : {1, 2, 3, 5})
        EXPECT_EQ(QAccessible::queryAccessibleInterface(line(at))->state().checkable, at < 5) << at;
    auto* eighty = QAccessible::queryAccessibleInterface(line(1));
    EXPECT_EQ(eighty->text(QAccessible::Name), "Limit to 80%");
    EXPECT_TRUE(eighty->state().checked);
    act(QAccessible::queryAccessibleInterface(line(3)));
    EXPECT_FALSE(isMenuOpen());
    EXPECT_EQ(asked, (QStringList{"toggleTemporaryOverride", "isAppleRecommendedModeEnabled=false", "quit",
                                  "customChargeLimit=100"}));
}

TEST_F(Panel, LargeTypeTakesOfTheRoomAndTheFooterStays)
{
    const std::tuple<double, int, bool> cases[] = {
        {0.75, 450, false}, {1.15, 450, false}, {1.25, 450, false}, {1.5, 450, false}, {1.5, 400, true}};
    for (const auto& [scale, height, scrolls] : cases) {
        SCOPED_TRACE(scale);
        setTypeScale(scale);
        panel->setHeight(height);
        window->grabWindow(); // and so lays out
        EXPECT_EQ(item("scroll")->property("interactive").toBool(), scrolls);
        for (const auto* name : {"launchDashboard", "gear", "power"})
            EXPECT_LE(box(name).bottom(), height - 16) << name;
        expectNoTextCut(panel);
    }
}

TEST_F(Panel, ARefusalIsReadWhereTheClickWas)
{
    EXPECT_FALSE(item("refusal")->isVisible());
    model.charger().apply({{"Refusal", "needs password"}});
    EXPECT_TRUE(item("refusal")->isVisible());
    EXPECT_TRUE(property("refusal", "text").contains("administrator's password"));
    window->grabWindow();
    expectNoTextCut(panel);
    EXPECT_FALSE(item("scroll")->property("interactive").toBool());
}

} // namespace
} // namespace velmora
