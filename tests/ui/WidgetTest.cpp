// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Views.h"
#include "Widgets/WidgetPlacing.h"
#include "client/RemoteInstallation.h"
#include "client/Widgets.h"
#include "desktop/PanelPlace.h"
#include "program/Requests.h"

#include <QCursor>
#include <QScreen>
#include <gtest/gtest.h>
#include <limits>

namespace velmora {
namespace {

TEST(WidgetPlace, IsInsideWhatBarsLeaveOfAScreenThatIsThere)
{
    const ScreenArea barAbove{{0, 0, 1280, 800}, {0, 28, 1280, 772}};
    const ScreenArea rightOfIt{{1280, 0, 1920, 1080}, {1280, 0, 1920, 1040}};
    const ScreenArea tiny{{0, 0, 100, 90}, {0, 10, 100, 80}};
    const std::tuple<const char*, QPoint, std::vector<ScreenArea>, QPoint> cases[] = {
        {"where it was", {1000, 300}, {barAbove, rightOfIt}, {1000, 300}},
        {"on the second screen", {2000, 300}, {barAbove, rightOfIt}, {2000, 300}},
        {"which is gone", {2000, 300}, {barAbove}, {1120, 300}},
        {"under a bar", {5, 0}, {barAbove}, {5, 28}},
        {"across two screens", {1150, 300}, {barAbove, rightOfIt}, {1120, 300}},
        {"between them, nearer to the right one", {1500, 1200}, {barAbove, rightOfIt}, {1500, 880}},
        {"off all, to the left", {-32'768, 32'767}, {barAbove, rightOfIt}, {0, 640}},
        {"a screen too small", {50, 50}, {tiny}, {0, 10}},
    };
    for (const auto& [what, wanted, screens, place] : cases)
        EXPECT_TRUE(widgetPlace(wanted, screens, {160, 160}) == place) << what;
    EXPECT_EQ(firstWidgetPlace({barAbove, rightOfIt}, {160, 160}, 0), QPoint(1096, 52));
}

/// Both widgets over settings that grant whatever they are asked, on a screen of 800 x 800.
struct WidgetTest : Views {
    WidgetTest()
    {
        for (auto* one : {widgets->small(), widgets->medium()}) {
            QObject::connect(one, &RemoteWidget::setWanted,
                             [this, one](const QString& key, const QVariant& value) {
                                 asked << key;
                                 one->apply({{key, value}});
                             });
        }
        auto* requests = singleton<Requests>("Requests");
        QObject::connect(requests, &Requests::dashboardWanted, [this] { asked << "dashboard"; });
        QObject::connect(requests, &Requests::widgetWanted, [this](const QString& size) { asked << size; });
    }
    void open(const char* name)
    {
        makeWindow(name);
        show();
    }
    QString text(const char* name) const { return property(name, "text"); }
    QString spoken() const { return voice("hold")->text(QAccessible::Name); }
    bool isMenuOpen() const { return window->findChild<QObject*>("menu")->property("opened").toBool(); }
    void press(std::initializer_list<Qt::Key> keys)
    {
        for (const auto key : keys) Views::press(key);
    }
    bool isPinned() const { return window->flags().testFlag(Qt::WindowStaysOnTopHint); }

    QStringList asked;
    Widgets* widgets = singleton<Widgets>("Widgets");
};

TEST_F(WidgetTest, ShowWhatTheModelHoldsAndSayItInOneBreath)
{
    model.apply({{"percentage", 72.5}, {"chargingState", "Charging"}, {"thermalState", "Serious"}});
    model.charger().apply({{"IsKnown", true}, {"HasBattery", true}, {"Health", 91.2}});
    open("SmallWidgetWindow");
    EXPECT_EQ(text("percentage") + " " + text("state"), "72% Charging");
    EXPECT_EQ(spoken(), "Battery, 72%, Charging");
    open("MediumWidgetWindow");
    EXPECT_EQ(voice("hold")->childCount(), 0) << "nothing is said twice";
    EXPECT_EQ(text("percentage") + " " + text("status"), "72% Charging");
    EXPECT_EQ(property("health", "value") + " " + property("thermal", "value"), "91% Serious");
    model.apply({{"timeToFull", qint64(65)}, {"isAppleRecommendedModeEnabled", false}});
    EXPECT_EQ(text("status"), "Charging: 1h 5m to full");
    setTypeScale(1.5);
    EXPECT_EQ(window->size(), QSize(504, 240));
    QCoreApplication::processEvents();
    window->grabWindow(); // and so lays out
    expectNoTextCut(window->contentItem());
}

TEST_F(WidgetTest, StandsWhereItWasPutAndIsMovedByKeysAndPointer)
{
    open("SmallWidgetWindow");
    EXPECT_EQ(window->position(), QPoint(616, 24));
    widgets->small()->apply({{"place", QVariant::fromValue(QList<int>{700, 5000})}});
    EXPECT_EQ(window->position(), QPoint(640, 640)) << "on the screen that there is";
    press({Qt::Key_Left, Qt::Key_Left, Qt::Key_Up, Qt::Key_Down, Qt::Key_Down});
    EXPECT_EQ(window->position(), QPoint(624, 640)) << "and not off it";
    EXPECT_TRUE(asked.empty()) << "not yet at rest";
    EXPECT_TRUE(QTest::qWaitFor([&] { return !asked.empty(); }));
    EXPECT_EQ(widgets->small()->place(), QPoint(624, 640));

    const auto hold = [&](QPoint from, QPoint to) { // no window manager moves it here
        QCursor::setPos(window->position() + from);
        QTest::mousePress(window.get(), Qt::LeftButton, {}, from);
        for (const auto at : {(from + to) / 2, to}) {
            QCursor::setPos(QPoint(624, 640) + at);
            QTest::mouseMove(window.get(), window->mapFromGlobal(QPoint(624, 640) + at));
        }
        QTest::mouseRelease(window.get(), Qt::LeftButton, {}, from);
    };
    hold({50, 50}, {-150, -150});
    EXPECT_EQ(window->position(), QPoint(524, 540)) << "from where the drag was seen to be one";
    window->close();
    EXPECT_EQ(widgets->small()->place(), QPoint(524, 540)) << "and kept at once, should it close";
    open("SmallWidgetWindow");
    EXPECT_EQ(window->position(), QPoint(524, 540));
    widgets->small()->apply({{"place", QVariant::fromValue(QList<int>{300, 200})}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->position() == QPoint(300, 200); })) << "by a script";
    widgets->medium()->apply(
        {{"place", QVariant::fromValue(QList<int>{std::numeric_limits<int>::max(), 5})}});
    EXPECT_FALSE(widgets->medium()->place()) << "no display has it";
}

TEST_F(WidgetTest, ComesBackAfterAChangeOfItsRoomButNotFromWhereItIsPutLater)
{
    const auto isAt = [&](QPoint place) {
        return QTest::qWaitFor([&] { return window->position() == place; });
    };
    widgets->small()->apply({{"place", QVariant::fromValue(QList<int>{640, 640})}});
    open("SmallWidgetWindow");
    setTypeScale(1.5);
    EXPECT_TRUE(isAt({560, 560})) << "it has grown";
    Q_EMIT window->screen()->availableGeometryChanged({});
    window->setPosition(100, 100); // by a window manager that makes room
    EXPECT_TRUE(isAt({560, 560}));
    EXPECT_TRUE(asked.empty());
    window->setPosition(100, 100); // by one that its owner told to
    EXPECT_TRUE(QTest::qWaitFor([&] { return widgets->small()->place() == QPoint(100, 100); }));
}

TEST_F(WidgetTest, MenuPinsItShowsItAtLogInAndClosesIt)
{
    open("SmallWidgetWindow");
    EXPECT_FALSE(isPinned());
    press({Qt::Key_Menu, Qt::Key_Return});
    EXPECT_TRUE(isPinned()) << "at once";
    QTest::keyClick(window.get(), Qt::Key_F10, Qt::ShiftModifier);
    press({Qt::Key_Down, Qt::Key_Return});
    EXPECT_TRUE(widgets->small()->isShownAtLogIn());
    EXPECT_FALSE(widgets->medium()->isShownAtLogIn());
    QTest::mouseClick(window.get(), Qt::RightButton, {}, {150, 150});
    ASSERT_TRUE(isMenuOpen());
    const auto* sheet = window->findChild<QObject*>("menu")->property("contentItem").value<QQuickItem*>();
    EXPECT_TRUE(QRectF(0, 0, 160, 160).contains(box(sheet)));
    press({Qt::Key_Escape, Qt::Key_Escape});
    EXPECT_FALSE(isMenuOpen());
    EXPECT_TRUE(window->isVisible()) << "Escape leaves a widget where it is";

    QTest::mouseDClick(window.get(), Qt::LeftButton, {}, {80, 80});
    QTest::mouseMove(window.get(), {1, 1}); // a line of the menu under the pointer would be the chosen one
    press({Qt::Key_Return, Qt::Key_Menu, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return});
    EXPECT_EQ(asked.mid(2), QStringList(3, "dashboard"));
    press({Qt::Key_Menu, Qt::Key_End, Qt::Key_Return});
    EXPECT_FALSE(window->isVisible());
}

TEST_F(WidgetTest, AreFoundOnThePageOfTheThresholds)
{
    singleton<RemoteInstallation>("InstallationManager")->apply({{"isInstallationCompleted", true}});
    open("DashboardWindow");
    window->setProperty("selectedTab", "Settings");
    for (const auto* size : {"small", "medium"}) {
        for (const auto* control : {"AtLogIn", "Show"}) {
            item(QString(size) + control)->forceActiveFocus(Qt::TabFocusReason);
            press({Qt::Key_Space});
        }
    }
    EXPECT_EQ(asked, (QStringList{"isShownAtLogIn", "small", "isShownAtLogIn", "medium"}));
    EXPECT_TRUE(widgets->medium()->isShownAtLogIn());
}

TEST(PanelPlace, IsAtTheIconAndInsideWhatBarsLeave)
{
    const ScreenArea barAbove{{0, 0, 1280, 800}, {0, 28, 1280, 772}};
    const ScreenArea barBelow{{0, 0, 1280, 800}, {0, 0, 1280, 770}};
    const ScreenArea twice{{0, 0, 960, 540}, {0, 30, 960, 510}, 2};
    const ScreenArea rightOfIt{{1920, 0, 1280, 800}, {1920, 28, 1280, 772}};
    const ScreenArea untold{{0, 0, 1280, 800}, {0, 0, 1280, 800}};
    const ScreenArea tiny{{0, 0, 300, 200}, {0, 0, 300, 200}};
    constexpr int most = std::numeric_limits<int>::max();
    const std::tuple<const char*, std::optional<QPoint>, std::vector<ScreenArea>, QPoint> cases[] = {
        {"under a bar above", {{640, 14}}, {barAbove}, {480, 32}},
        {"under a bar that nobody tells of", {{640, 5}}, {untold}, {480, 32}},
        {"over one", {{640, 795}}, {untold}, {480, 318}},
        {"kept in on the right", {{1269, 14}}, {barAbove}, {956, 32}},
        {"kept in on the left", {{40, 14}}, {barAbove}, {4, 32}},
        {"over a bar below", {{640, 785}}, {barBelow}, {480, 316}},
        {"on a bar at the side", {{20, 300}}, {barBelow}, {4, 312}},
        {"amid the screen, where no bar is", {{640, 400}}, {barAbove}, {956, 32}},
        {"of a host that does not know", {{0, 0}}, {barAbove}, {956, 32}},
        {"unknown", {}, {barAbove}, {956, 32}},
        {"counted from the icon's corner", {{11, 14}}, {barAbove}, {956, 32}},
        {"unknown, of a bar below", {}, {barBelow}, {956, 316}},
        {"off every screen", {{5000, -3}}, {barAbove}, {956, 32}},
        {"of a desktop at 200 %, X at 100 %", {{2196, 1556}}, {barBelow}, {938, 316}},
        {"of a desktop at 150 %, X at 100 %", {{1647, 1167}}, {barBelow}, {938, 316}},
        {"a dense screen", {{1000, 20}}, {twice}, {340, 34}},
        {"the second screen", {{2000, 10}}, {twice, rightOfIt}, {1924, 32}},
        {"a screen too small", {{150, 5}}, {tiny}, {4, 4}},
        {"the largest numbers", {{most, most}}, {twice}, {636, 34}},
    };
    for (const auto& [what, click, screens, place] : cases)
        EXPECT_TRUE(panelPlace(click, screens, {320, 450}) == place) << what;
}

} // namespace
} // namespace velmora
