// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Views.h"
#include "client/RemoteCalendar.h"
#include "client/RemoteInstallation.h"
#include "client/RemoteNotifications.h"
#include "history/TimeScale.h"

#include <QDateTime>

namespace velmora {
namespace {

using duration::hour;

/// A sample an hour for so many hours up to a minute ago, of a battery that ages.
QVariant history(int hours)
{
    const double end = double(QDateTime::currentSecsSinceEpoch()) - Date::unixReference - 60;
    QList<QVariantMap> records;
    for (int i = 0; i < hours; ++i)
        records.append({{"timestamp", end - (hours - 1 - i) * hour},
                        {"percentage", 60.0},
                        {"health", 95 - 0.002 * i},
                        {"thermalState", i % 4 == 0 ? "Serious" : "Nominal"}});
    return QVariant::fromValue(records);
}

/// The dashboard's window, over a model that grants whatever it is asked.
struct Dashboard : Views {
    using Views::Views;

    void SetUp() override
    {
        QObject::connect(&model, &RemoteModel::setWanted, [this](const QString& key, const QVariant& value) {
            asked << key + "=" +
                         (value.canConvert<QString>() ? value.toString() : value.toStringList().join('+'));
            if (isGranting) model.apply({{key, isNumber(key) ? QVariant(value.toDouble()) : value}});
        });
        QObject::connect(&model, &RemoteModel::operationWanted, [this](const QString& operation) {
            if (operation != "fetchHistory") asked << operation;
        });
        singleton<RemoteInstallation>("InstallationManager")->apply({{"isInstallationCompleted", true}});
        makeWindow("DashboardWindow");
        show();
    }
    static bool isNumber(const QString& key)
    {
        return key.contains("Limit", Qt::CaseInsensitive) && !key.startsWith("notify");
    }

    void drag(QPoint from, QPoint to)
    {
        QTest::mousePress(window.get(), Qt::LeftButton, {}, from);
        QTest::mouseMove(window.get(), (from + to) / 2);
        QTest::mouseMove(window.get(), to);
    }
    void release(QPoint at) { QTest::mouseRelease(window.get(), Qt::LeftButton, {}, at); }
    void open(const char* page)
    {
        window->setProperty("selectedTab", page);
        window->grabWindow(); // by then everything has its place
    }
    QString title() const { return property("page/title", "text"); }

    const QVariantMap charger{{"IsKnown", true},
                              {"HasBattery", true},
                              {"Control", "thresholds"},
                              {"Mode", "storage"},
                              {"WantedEndThreshold", qint64{50}},
                              {"EndThreshold", qint64{55}},
                              {"StartThreshold", "broken"},
                              {"CycleCount", qint64{7}}};
    QStringList asked;
    bool isGranting = true;
};

TEST_F(Dashboard, LinksLeadToTheirPagesByKeyboard)
{
    const std::pair<const char*, const char*> pages[] = {
        {"Health", "Health Trends"}, {"Thermal", "Thermal History"},     {"Ecosystem", "Ecosystem Sync"},
        {"Settings", "Thresholds"},  {"Notifications", "Notifications"},
    };
    EXPECT_EQ(property("statusLine", "text"), "Live battery analytics and performance monitoring.");
    EXPECT_EQ(item("visualizer")->width(), 72 * 1.2);
    item("linkOverview")->forceActiveFocus(Qt::TabFocusReason);
    for (const auto& [page, itsTitle] : pages) {
        press(Qt::Key_Down);
        EXPECT_EQ(title(), itsTitle);
        EXPECT_TRUE(voice(QString("link") + page)->state().checked);
    }
    open("Attic");
    EXPECT_EQ(property("placeholder", "visible"), "true");
    EXPECT_FALSE(find(item("page"), "title"));
    EXPECT_TRUE(asked.isEmpty()) << "looking changes nothing: " << asked.join(' ').toStdString();
}

TEST_F(Dashboard, SidebarIsMovedWithinItsBoundsAndHidden)
{
    const auto width = [&] { return item("sidebar")->width(); };
    const auto at = [&](int x) { return QPoint(x, 400); };
    EXPECT_EQ(width(), 300);
    for (const auto& [to, then] : {std::pair(350, 350), {800, 450}, {10, 280}}) {
        drag(at(int(width())), at(to));
        release(at(to));
        EXPECT_EQ(width(), then);
        EXPECT_EQ(item("detail")->x(), then);
    }
    item("divider")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Right);
    EXPECT_EQ(width(), 290);
    press(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_FALSE(item("sidebar")->isVisible());
    EXPECT_EQ(item("detail")->width(), 900);
}

TEST_F(Dashboard, SwitchesAskForWhatTheySay)
{
    open("Settings");
    EXPECT_TRUE(property("limiterText", "text").startsWith("The background service is not running"));
    model.charger().apply(charger);
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"Settings", "storage", "isStorageModeEnabled=true"},
        {"Notifications", "notifyOnLowBattery", "notifyOnLowBattery=false"},
    };
    for (const auto& [page, name, expected] : cases) {
        open(page);
        click(name);
        EXPECT_EQ(asked.join(' '), expected);
        asked.clear();
    }
    EXPECT_FALSE(item("lowBatteryLimit")->isEnabled()) << "nothing is told of it";
    open("Settings");
    EXPECT_EQ(property("limiterText", "text"), "On battery: charging will stop at 55%, storage mode is on.");
    EXPECT_EQ(property("limit/caption", "text"), "In force: 55%, since this laptop does not support 50%.");
    EXPECT_FALSE(item("refusal")->isVisible());
    model.charger().apply({{"Refusal", "denied"}});
    EXPECT_TRUE(item("refusal")->isVisible());
    EXPECT_TRUE(property("refusal", "text").startsWith("Not changed: "));
    open("Health");
    EXPECT_EQ(property("cycles", "value"), "7");
}

TEST_F(Dashboard, JourneysAreShownAsTheCalendarTellsOfThem)
{
    auto* calendar = singleton<RemoteCalendar>("CalendarContextManager");
    QObject::connect(calendar, &RemoteObject::setWanted, [this](const QString& key, const QVariant& value) {
        asked << key + "=" + value.toString();
    });
    QObject::connect(calendar, &RemoteObject::operationWanted,
                     [this](const QString& operation) { asked << operation; });
    open("Notifications");
    EXPECT_EQ(asked.join(' '), "checkNow") << "what is shown is to be so";
    EXPECT_EQ(property("journey", "text"), "Velmora does not look at your calendar.");
    EXPECT_FALSE(item("isTravelChargeOn")->isEnabled());
    const QDateTime evening(QDate(2026, 11, 23), QTime(21, 30));
    const QList<double> begins{Date::fromUnix(double(evening.toSecsSinceEpoch())).sinceReference};
    const std::tuple<QVariantMap, const char*, const char*> cases[] = {
        {{{"isConsentGiven", true}}, "No access: Velmora finds no calendar that it can read.", ""},
        {{{"calendarAccessGranted", true}, {"isLastScanWhole", true}},
         "No journey within the next 24 hours.",
         ""},
        {{{"isLastScanWhole", false}},
         "Not all calendars could be read. In the others there is no journey.",
         ""},
        {{{"isTravelDayDetected", true}}, "A journey without a title", ""},
        {{{"detectedEventTitle", QStringList{"<b>Flight</b>"}}}, "<b>Flight</b>", ""},
        {{{"travelChargeStage", "scheduled"}, {"travelChargeBegins", QVariant::fromValue(begins)}},
         "<b>Flight</b>",
         "The charge to 100 % begins Mon 21:30."},
        {{{"travelChargeStage", "unplugged"}},
         "<b>Flight</b>",
         "The charge to 100 % begins once the charger is plugged in."},
        {{{"travelChargeStage", "nonsense"}}, "<b>Flight</b>", ""},
    };
    for (const auto& [values, journey, charge] : cases) {
        calendar->apply(values);
        EXPECT_EQ(property("journey", "text"), journey);
        EXPECT_EQ(property("travelCharge", "text"), charge);
        EXPECT_EQ(item("travelCharge")->isVisible(), *charge != 0);
    }
    asked.clear();
    item("isTravelChargeOn")->forceActiveFocus(); // which scrolls to it
    click("isTravelChargeOn");
    EXPECT_EQ(asked.join(' '), "isTravelChargeOn=true");
}

TEST_F(Dashboard, TheNotificationsPageSaysWhoShowsThemAndWhenTheLastOneWas)
{
    auto& notices = *singleton<RemoteNotifications>("Notifications");
    QObject::connect(&notices, &RemoteObject::operationWanted,
                     [this](const QString& operation) { asked << operation; });
    model.charger().apply(charger);
    open("Notifications");
    asked.clear();
    EXPECT_FALSE(item("sendTestNotice")->isEnabled()) << "nobody shows any";
    EXPECT_EQ(property("serverText", "text"), "Nothing on this desktop shows notices.");
    notices.apply({{"isServerStartable", true}});
    EXPECT_TRUE(property("serverText", "text").startsWith("The desktop starts"));
    notices.apply({{"server", "dunst"}, {"lastHeatNotice", QVariant::fromValue(QList<double>{815'400'000})}});
    EXPECT_EQ(property("serverText", "text"), "Notices are shown by dunst.");
    EXPECT_TRUE(
        property("notifyOnHeat", "subtitle").endsWith("cannot be paused. Last sent on 3 Nov 2026, 12:00."));
    EXPECT_FALSE(property("notifyOnLimit", "subtitle").contains("Last sent"));
    click("sendTestNotice");
    EXPECT_EQ(asked, QStringList("sendTestNotice"));
    EXPECT_FALSE(item("testText")->isVisible());
    notices.apply({{"testResult", QStringList("")}, {"isInhibited", true}});
    EXPECT_EQ(property("serverText", "text"), "Do not disturb is on: dunst keeps notices to itself.");
    EXPECT_EQ(property("testText", "text"), "Sent, and kept back by do not disturb.");
    EXPECT_TRUE(item("notifyOnCycle")->isEnabled());
    EXPECT_FALSE(item("notifyOnHeat")->isEnabled());
    model.charger().apply({{"CycleCount", qint64{-1}}, {"CanPauseForHeat", true}});
    EXPECT_FALSE(item("notifyOnCycle")->isEnabled());
    EXPECT_TRUE(item("notifyOnHeat")->isEnabled());
}

TEST_F(Dashboard, ControlsOfTheLimiterAreUsableWhereTheyHaveAnEffect)
{
    open("Settings");
    const std::tuple<const char*, QVariant, const char*> cases[] = {
        {"IsKnown", false, ""},
        {"HasBattery", false, ""},
        {"Control", "none", ""},
        {"Control", "end threshold", "autoProtect limit storage quickCharge"},
        {"Control", "thresholds", "autoProtect limit hysteresis storage quickCharge"},
    };
    for (const auto& [property, value, expected] : cases) {
        model.charger().apply(charger);
        model.charger().apply({{property, value}});
        QStringList usable;
        for (const auto* name : {"autoProtect", "limit", "hysteresis", "storage", "quickCharge"})
            if (item(name)->isEnabled()) usable << name;
        EXPECT_EQ(usable.join(' '), expected) << property;
    }
}

TEST_F(Dashboard, SliderAsksWhenItIsLetGo)
{
    open("Settings");
    model.charger().apply(charger);
    drag(place("limit/slider", 0.61), place("limit/slider", 0.99));
    EXPECT_EQ(property("limit/value", "text"), "100%");
    EXPECT_EQ(property("hysteresis/caption", "text"), "With Auto-Protect charging begins again below 98%.");
    EXPECT_TRUE(asked.isEmpty());
    model.apply({{"customChargeLimit", 70.0}});
    EXPECT_EQ(property("limit/value", "text"), "100%") << "not out of the hand";
    release(place("limit/slider", 0.99));
    EXPECT_EQ(asked.join(' '), "customChargeLimit=100");

    item("limit/slider")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Left);
    EXPECT_EQ(asked.last(), "customChargeLimit=99");
    voice("limit/slider")->valueInterface()->setCurrentValue(60);
    EXPECT_EQ(asked.last(), "customChargeLimit=60");
    EXPECT_EQ(asked.size(), 3);

    isGranting = false;
    press(Qt::Key_Left);
    EXPECT_TRUE(QTest::qWaitFor([&] { return item("limit/slider")->property("value").toInt() == 60; }));
    asked.clear();
    for (const double outside : {30.0, 79.6, 100.0}) model.apply({{"customChargeLimit", outside}});
    EXPECT_TRUE(asked.isEmpty()) << "what it cannot show is not its to change";
}

TEST_F(Dashboard, PlotReadsOutUnderThePointerAndByKeys)
{
    model.charger().apply(charger);
    open("Health");
    EXPECT_EQ(property("empty", "visible"), "true");
    EXPECT_TRUE(property("empty", "text").startsWith("No samples yet. The first comes"));
    EXPECT_FALSE(item("exportTable")->isEnabled());

    model.apply({{"history", history(24 * 10)}});
    EXPECT_EQ(property("empty", "visible"), "false");
    EXPECT_EQ(property("fitted", "value"), "-1.4 ± 0.0% / mo");
    const auto readOut = [&] { return property("readOut", "text"); };
    EXPECT_TRUE(readOut().startsWith("240 samples, "));
    QTest::mouseMove(window.get(), place("plot", 0.02)); // on the scale: the first
    EXPECT_TRUE(QTest::qWaitFor([&] { return readOut().contains(": 95.0% health, 60% charged, Serious"); }));
    item("plot")->forceActiveFocus(Qt::TabFocusReason);
    const std::pair<Qt::Key, const char*> keys[] = {
        {Qt::Key_Left, "Serious"}, {Qt::Key_Right, "Nominal"}, {Qt::Key_End, "94.5%"},
        {Qt::Key_Right, "94.5%"},  {Qt::Key_Home, "Serious"},
    };
    for (const auto& [key, part] : keys) {
        press(key);
        EXPECT_TRUE(readOut().contains(part)) << readOut().toStdString();
    }
    EXPECT_EQ(voice("plot")->text(QAccessible::Description), readOut());

    click("rangeDay");
    EXPECT_TRUE(readOut().startsWith("24 samples, ")) << readOut().toStdString();
    press(Qt::Key_Right);
    EXPECT_EQ(window->findChild<QObject*>("trends")->property("range").toString(), "Week");
    open("Thermal");
    EXPECT_EQ(property("shareSerious", "value"), "25%");
    EXPECT_EQ(property("shareCritical", "value"), "0%");
}

struct DashboardPicture : Dashboard, testing::WithParamInterface<const char*> {
    DashboardPicture() : Dashboard(GetParam()) {}
};

TEST_P(DashboardPicture, FitsIntoTheSmallestWindowWithTheWidestSidebar)
{
    model.apply({{"history", history(24 * 30)}});
    drag({300, 400}, {450, 400});
    release({450, 400});
    for (const auto* page : {"Overview", "Health", "Thermal", "Ecosystem", "Settings", "Notifications"}) {
        open(page);
        const auto picture = window->grabWindow();
        EXPECT_EQ(picture.pixelColor(456, 596).lightness() < 64, QString(GetParam()) == "dark");
        SCOPED_TRACE(page);
        expectNoTextCut(item("detail"));
        for (const auto* one : below(item("detail"))) {
            if (one->isVisible()) {
                EXPECT_LE(box(one).right(), 900.5) << one->metaObject()->className();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Appearances, DashboardPicture, testing::Values("light", "dark"));

TEST(TimeScale, MarksRoundLocalTimesAndNoMoreThanAskedFor)
{
    const auto date = [](const char* text) {
        return Date::fromUnix(double(QDateTime::fromString(text, Qt::ISODate).toSecsSinceEpoch()));
    };
    const std::tuple<const char*, const char*, int, const char*> cases[] = {
        {"2026-11-20T13:10:00", "2026-11-21T13:10:00", 5, "18:00 Sat 21 06:00 12:00"},
        {"2026-11-21T12:10:00", "2026-11-21T13:10:00", 5, "13:00"},
        {"2026-11-14T13:10:00", "2026-11-21T13:10:00", 4, "16 Nov 18 Nov 20 Nov"},
        {"2025-11-21T00:00:00", "2026-11-21T00:00:00", 5, "Jan 2026 Apr 2026 Jul 2026 Oct 2026"},
        {"2001-01-01T00:00:00", "2026-11-21T00:00:00", 3, "Jan 2001 Jan 2011 Jan 2021"},
    };
    for (const auto& [from, to, most, labels] : cases) {
        QStringList found;
        for (const auto& mark : timeMarks(date(from), date(to), most)) found << mark.label;
        EXPECT_EQ(found.join(' '), labels);
    }
}

} // namespace
} // namespace velmora
