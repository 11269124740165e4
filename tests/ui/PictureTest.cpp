// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Gallery.h"
#include "Pictures.h"
#include "Views.h"
#include "client/RemoteAccount.h"
#include "client/RemoteFleet.h"
#include "client/RemoteInstallation.h"
#include "client/RemoteNotifications.h"

#include <QPainter>
#include <cmath>

namespace velmora {
namespace {

using duration::hour;
constexpr Date today{815'400'000}; ///< 2026-11-03 12:00:00 UTC

/// Three weeks of a battery that ages, is unplugged for half of the day, and was very hot once.
QVariant history()
{
    QList<QVariantMap> records;
    for (int i = 24 * 21; i > 0; --i) {
        const auto* heat = i / 4 == 20  ? "Critical"
                           : i % 24 < 4 ? "Serious"
                           : i % 24 < 9 ? "Fair"
                                        : "Nominal";
        records.append({{"timestamp", today.sinceReference - i * hour},
                        {"percentage", 60 + 20 * std::sin(i / 24.0 * 6.28)},
                        {"health", 94 + 0.004 * i + 0.3 * std::sin(i / 15.0)},
                        {"thermalState", heat}});
    }
    return QVariant::fromValue(records);
}

QVariantMap laptop()
{
    return {{"percentage", 80.0},
            {"chargingState", "Idle"},
            {"isLimitReached", true},
            {"powerSource", "AC"},
            {"thermalState", "Fair"},
            {"history", history()},
            {"selectedDeviceID", QStringList{"b"}}};
}

/// It makes 85 % of the 80 that it was told.
QVariantMap charger()
{
    return {{"IsKnown", true},
            {"HasBattery", true},
            {"Control", "thresholds"},
            {"Mode", "auto-protect"},
            {"WantedStartThreshold", qint64{78}},
            {"WantedEndThreshold", qint64{80}},
            {"StartThreshold", qint64{75}},
            {"EndThreshold", qint64{85}},
            {"CanPauseForHeat", true},
            {"CycleCount", qint64{224}}};
}

QVariantMap notifications()
{
    const auto last = QVariant::fromValue(QList<double>{today.sinceReference - 2 * hour});
    return {{"server", "gnome-shell"}, {"lastLimitNotice", last}, {"testResult", QStringList("")}};
}

/// Of three machines, the second of which was sent a command two minutes ago and is chosen.
QVariantMap fleet()
{
    const auto ago = [](double seconds) { return today.sinceReference - seconds; };
    const QList<QVariantMap> devices{{{"deviceID", "a"},
                                      {"deviceName", "Attic"},
                                      {"percentage", 72.0},
                                      {"thermalState", "Nominal"},
                                      {"lastUpdate", ago(20)}},
                                     {{"deviceID", "b"},
                                      {"deviceName", "Desk"},
                                      {"percentage", 31.0},
                                      {"isCharging", true},
                                      {"thermalState", "Fair"},
                                      {"lastUpdate", ago(200)},
                                      {"remoteChargeLimit", 60.0},
                                      {"remoteAppleMode", true},
                                      {"isStorageModeEnabled", false},
                                      {"commandTimestamp", ago(130)},
                                      {"limitInForce", 80.0},
                                      {"autoProtectInForce", true},
                                      {"storageModeInForce", false},
                                      {"acceptsCommands", true}},
                                     {{"deviceID", "c"},
                                      {"deviceName", "Cellar"},
                                      {"percentage", 50.0},
                                      {"lastUpdate", ago(2 * 86'400.0)}}};
    const auto synchronised = QVariant::fromValue(QList<double>{ago(20)});
    return {
        {"isOn", true},          {"acceptsCommands", true},      {"deviceID", "a"},
        {"deviceName", "Attic"}, {"lastSyncDate", synchronised}, {"devices", QVariant::fromValue(devices)}};
}

QVariantMap server()
{
    const QVariantMap place{
        {"kind", "server"}, {"host", "records.example.org"}, {"port", qint64{5432}}, {"user", "ada"}};
    return {{"place", place}, {"fault", "no-server"}};
}

TEST(PictureComparison, SeesWhatPeopleSeeAndNotHowTypeIsDrawn)
{
    struct Look {
        const char* what = "";
        bool differs = true;
        int shift = 0;
        QColor card{0xff, 0x99, 0x00};
        QFont::HintingPreference hinting = QFont::PreferVerticalHinting;
    };
    const auto drawn = [](const Look& look) {
        QImage image(300, 100, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(look.shift, look.shift);
        painter.fillRect(10, 10, 120, 60, look.card);
        QFont font;
        font.setPixelSize(13);
        font.setHintingPreference(look.hinting);
        painter.setFont(font);
        painter.drawText(140, 40, "Holding at 80%: plugged in");
        return reduced(image);
    };
    const Look cases[] = {
        {.what = "hinting", .differs = false, .hinting = QFont::PreferNoHinting},
        {.what = "a pixel", .differs = false, .shift = 1},
        {.what = "four pixels", .shift = 4},
        {.what = "ground", .card = {0xff, 0x80, 0x00}},
    };
    for (const auto& look : cases)
        EXPECT_EQ(!differences(drawn(look), drawn({})).empty(), look.differs) << look.what;
}

/// The name is the appearance.
struct Pictures : Views, testing::WithParamInterface<const char*> {
    Pictures() : Views(GetParam(), [] { return today; })
    {
        model.apply(laptop());
        model.charger().apply(charger());
        singleton<RemoteNotifications>("Notifications")->apply(notifications());
    }

    void open(const QString& name)
    {
        makeWindow(name + "Window");
        show();
    }
    /// All of it, with nothing moving.
    QImage gallery()
    {
        window = makeGallery(engine, false);
        show();
        window->setHeight(int(std::ceil(window->property("contentHeight").toDouble())));
        const auto* content = window->contentItem();
        const auto* charging = item("BatteryVisualizer, charging/ring");
        EXPECT_TRUE(QTest::qWaitFor([&] { return charging->opacity() == 0.4; }));
        EXPECT_TRUE(QTest::qWaitFor([&] { return content->height() == window->height(); }));
        return window->grabWindow();
    }
    QColor pixel(const QImage& picture, const char* cell, double x, double y) const
    {
        const auto* stage = item(cell + QStringLiteral("/stage"));
        const auto place = stage->mapToScene({stage->width() * x, stage->height() * y});
        return picture.pixelColor(int(place.x()), int(place.y()));
    }
    static QString name(const QString& what) { return what.toLower() + '-' + GetParam(); }
};

TEST_P(Pictures, PagesAndPanelLookAsTheyDid)
{
    for (const auto* one : {"Panel", "SmallWidget", "MediumWidget"}) {
        open(one);
        EXPECT_TRUE(looksAsKept(window->grabWindow(), name(one)));
    }
    auto* installation = singleton<RemoteInstallation>("InstallationManager");
    installation->apply({{"isInstallationCompleted", false}});
    open("Dashboard");
    EXPECT_TRUE(looksAsKept(window->grabWindow(), name("installation")));
    installation->apply({{"isInstallationCompleted", true}});
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->contentItem()->width() == 900; }));
    for (const auto* page : {"Overview", "Health", "Thermal", "Ecosystem", "Settings", "Notifications"}) {
        window->setProperty("selectedTab", page);
        EXPECT_TRUE(looksAsKept(window->grabWindow(), name(page)));
    }
}

TEST_P(Pictures, TheFleetLooksAsItDid)
{
    auto* sync = singleton<RemoteFleet>("EcosystemSync");
    sync->setClock([] { return today; });
    sync->apply(fleet());
    singleton<RemoteInstallation>("InstallationManager")->apply({{"isInstallationCompleted", true}});
    open("Dashboard");
    window->setProperty("selectedTab", "Ecosystem");
    EXPECT_TRUE(looksAsKept(window->grabWindow(), name("ecosystem-fleet")));
    sync->apply({{"devices", QVariant::fromValue(QList<QVariantMap>{})}});
    sync->apply(server());
    EXPECT_TRUE(looksAsKept(window->grabWindow(), name("ecosystem-server")));
}

TEST_P(Pictures, TheAccountLooksAsItDid)
{
    auto* account = singleton<RemoteAccount>("AppleAuthManager");
    singleton<RemoteInstallation>("InstallationManager")->apply({{"isInstallationCompleted", true}});
    account->apply({{"issuer", "https://login.example.org"},
                    {"clientID", "velmora"},
                    {"isSignedIn", true},
                    {"userDisplayName", QStringList("Ada Lovelace")},
                    {"userEmail", QStringList("ada@example.org")},
                    {"signedInSince", QVariant::fromValue(QList<double>{today.sinceReference})}});
    open("Dashboard");
    window->setProperty("selectedTab", "Ecosystem");
    EXPECT_TRUE(looksAsKept(window->grabWindow(), name("ecosystem-account")));
}

TEST_P(Pictures, ComponentsLookAsTheyDid)
{
    const auto picture = gallery();
    for (const auto* section : {"Battery", "Grounds", "Figures", "Controls", "Theme", "Symbols"}) {
        const auto place = box(section).toAlignedRect();
        const auto nameOf = [&](QRect part) {
            const auto* flow = item(section)->childItems().last();
            const auto middle = QPointF(part.translated(place.topLeft()).center());
            const auto* cell = flow->childAt(flow->mapFromScene(middle).x(), flow->mapFromScene(middle).y());
            return cell ? cell->objectName() : QString();
        };
        EXPECT_TRUE(looksAsKept(picture.copy(place), name(QStringLiteral("gallery-") + section), nameOf));
    }
}

/// What stands on the window's ground, from the bottom up: a level of grey and how much it covers.
struct Layer {
    double level, opacity;
};

TEST_P(Pictures, GroundsHaveTheirExactShades)
{
    const bool isDark = GetParam() == std::string("dark");
    const struct {
        const char* cell;
        double x, y; ///< part of the component's box
        std::vector<Layer> light, dark;
    } cases[] = {
        {"PodBackground", 0.5, 0.5, {{0, 0.03}}, {{1, 0.05}}},
        {"PodBackground", 0.5, 0, {{0, 0.03}, {0, 0.06 / 2}}, {{1, 0.05}, {1, 0.08 / 2}}},
        {"GlassyBackground",
         0.2,
         0.5,
         {{0.48, 1}, {0.98, 0.9}},
         {{0.48, 1}, {0.15, 0.6}}}, // above the accent
        {"GlassyBackground", 0.5, 0, {{0.98, 0.9}, {0, 0.08 / 2}}, {{0.15, 0.6}, {1, 0.12 / 2}}},
        {"DeviceRow", 0.92, 0.17, {{0, 0.05 * 0.87}}, {{1, 0.05 * 0.9}}},
        {"BatteryVisualizer, empty", 0.5, 0.03, {{0, 0.06 * 0.87}}, {{1, 0.06 * 0.9}}},
    };
    const auto picture = gallery();
    for (const auto& [cell, x, y, light, dark] : cases) {
        double expected = isDark ? 0x1e : 0xff;
        for (const auto& [level, opacity] : isDark ? dark : light)
            expected += (255 * level - expected) * opacity;
        EXPECT_NEAR(pixel(picture, cell, x, y).green(), expected, 1) << cell << ' ' << x << ' ' << y;
    }
}

INSTANTIATE_TEST_SUITE_P(Appearances, Pictures, testing::Values("light", "dark"));

} // namespace
} // namespace velmora
