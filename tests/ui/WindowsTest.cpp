// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "windows/Windows.h"
#include "FakeApplication.h"
#include "Views.h"

#include <QDBusReply>
#include <QGuiApplication>
#include <QImage>
#include <QProcess>
#include <QSignalSpy>
#include <QWindow>
#include <csignal>

namespace velmora {
namespace {

struct WindowsTest : Views {
    static QWindow* shown(const char* title)
    {
        for (auto* window : QGuiApplication::topLevelWindows())
            if (window->title() == title && window->isVisible()) return window;
        return nullptr;
    }
    static QWindow* panel() { return shown("Velmora"); }
    /// As by a click on something else.
    void loseFocus()
    {
        ASSERT_TRUE(QTest::qWaitForWindowActive(panel()));
        other.show();
        other.requestActivate();
        ASSERT_TRUE(QTest::qWaitFor([] { return !panel(); }));
    }

    QWindow other;
};

TEST_F(WindowsTest, OpenOnceReleasedAndCloseOnTheSecondClick)
{
    Windows windows(engine, model);
    QSignalSpy allClosed(&windows, &Windows::allClosed);
    EXPECT_FALSE(windows.show("no such window"));
    EXPECT_TRUE(windows.toggle("panel", QPoint(400, 5)));
    EXPECT_TRUE(windows.toggle("panel", QPoint(400, 5))) << "an impatient click";
    EXPECT_FALSE(panel());
    windows.release();
    ASSERT_TRUE(panel());
    EXPECT_EQ(panel()->geometry(), QRect(240, 32, 320, 450));
    EXPECT_TRUE(windows.show("panel"));
    EXPECT_TRUE(allClosed.empty());
    EXPECT_TRUE(windows.toggle("panel", QPoint(400, 5)));
    EXPECT_FALSE(panel());
    EXPECT_EQ(allClosed.count(), 1);
    EXPECT_TRUE(windows.toggle("panel", QPoint(400, 5)));
    ASSERT_TRUE(QTest::qWaitForWindowActive(panel()));
    QTest::keyClick(panel(), Qt::Key_Escape);
    EXPECT_EQ(allClosed.count(), 2);
}

TEST_F(WindowsTest, TheClickThatTookTheFocusDoesNotOpenThePanelAgainALaterOneDoes)
{
    for (const bool opens : {false, true}) {
        Windows windows(engine, model, std::chrono::hours(opens ? 0 : 1)); // that a click may travel
        QSignalSpy allClosed(&windows, &Windows::allClosed);
        windows.release();
        windows.show("panel");
        loseFocus();
        EXPECT_TRUE(QTest::qWaitFor([&] { return allClosed.count() == int(opens); }));
        EXPECT_TRUE(windows.toggle("panel", QPoint(400, 5)));
        EXPECT_EQ(panel() != nullptr, opens);
        EXPECT_EQ(allClosed.count(), int(opens)) << "the click would start another program";
        EXPECT_TRUE(windows.show("panel"));
        EXPECT_TRUE(panel());
    }
}

TEST_F(WindowsTest, DashboardStaysUntilItIsClosedAndIsShownAgainAsItIs)
{
    Windows windows(engine, model, std::chrono::milliseconds(0));
    QSignalSpy allClosed(&windows, &Windows::allClosed);
    windows.release();
    windows.show("panel");
    ASSERT_TRUE(QTest::qWaitForWindowActive(panel()));
    windows.show("dashboard");
    ASSERT_TRUE(QTest::qWaitFor([] { return !panel(); })) << "the panel goes";
    auto* dashboard = shown("Velmora Dashboard");
    ASSERT_TRUE(QTest::qWaitForWindowActive(dashboard));
    EXPECT_EQ(dashboard->size(), QSize(900, 600));
    QTest::keyClick(dashboard, Qt::Key_Escape);
    other.show();
    other.requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    dashboard->setProperty("selectedTab", "Health");
    windows.show("dashboard");
    EXPECT_TRUE(QTest::qWaitForWindowActive(dashboard));
    EXPECT_EQ(dashboard->property("selectedTab"), "Health");
    EXPECT_TRUE(allClosed.empty());
    dashboard->close();
    EXPECT_EQ(allClosed.count(), 1);
}

/// velmora-ui itself, on the fake application's bus.
struct Program : testing::Test {
    Program()
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DBUS_SESSION_BUS_ADDRESS", application.daemon.address().c_str());
        environment.insert("VELMORA_APPEARANCE", "dark");
        for (auto* process : {&first, &second}) {
            process->setProcessEnvironment(environment);
            process->setProgram(VELMORA_BIN "/velmora-ui");
        }
    }
    static void start(QProcess& process, const QString& arguments)
    {
        process.setArguments(arguments.split(' '));
        process.start();
    }
    /// The exit status; -1 for a crash.
    static int end(QProcess& process)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 20'000));
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
    /// `first`, ready to be told of windows.
    void open()
    {
        application.isRead = false;
        start(first, "--show panel");
        const auto isOnBus = [&] {
            return application.other.interface()->isServiceRegistered(wire::windows::serviceName).value();
        };
        ASSERT_TRUE(QTest::qWaitFor([&] { return application.isRead && isOnBus(); }, 20'000));
    }
    /// The error's name.
    QString ask(const QString& method, const QVariantList& arguments)
    {
        using namespace wire::windows;
        auto call = QDBusMessage::createMethodCall(serviceName, objectPath, interface, method);
        call.setArguments(arguments);
        const auto reply = application.other.call(call);
        EXPECT_LT(reply.errorMessage().size(), 200) << "it repeats what was sent";
        return reply.errorName().section('.', -1);
    }

    FakeApplication application;
    QProcess first, second;
};

TEST_F(Program, ASecondOneHasTheFirstDoWhatIsWanted)
{
    open();
    EXPECT_EQ(ask("Show", {"cellar", ""}), "InvalidArgs");
    EXPECT_EQ(ask("Show", {1}), "UnknownMethod");
    EXPECT_EQ(ask("Toggle", {"panel"}), "UnknownMethod");
    EXPECT_EQ(ask("Show", {QString(100'000, 'x'), ""}), "InvalidArgs");
    start(second, "--show panel");
    EXPECT_EQ(end(second), 0);
    EXPECT_EQ(first.state(), QProcess::Running);
    start(second, "--toggle panel --at 5,5");
    EXPECT_EQ(end(second), 0);
    EXPECT_EQ(end(first), 0);
}

TEST_F(Program, EndsWithTheApplicationAndOnASignal)
{
    open();
    first.terminate();
    EXPECT_EQ(end(first), 0);
    open();
    application.leave();
    EXPECT_EQ(end(first), 0);
    start(first, "--show panel");
    EXPECT_EQ(end(first), 1) << "nobody to show anything of";
}

TEST_F(Program, UnderstandsItsArgumentsOrSaysSo)
{
    const std::pair<const char*, int> cases[] = {
        {"--help", 0},
        {"", 2},
        {"--show", 2},
        {"--at 1,2", 2},
        {"--toggle panel --at 1", 2},
        {"--toggle panel --show panel", 2},
        {"--show cellar", 1},
        {"--picture x.png --window cellar", 1},
        {"--picture x.png --page Health", 2},
    };
    for (const auto& [arguments, status] : cases) {
        SCOPED_TRACE(arguments);
        start(first, arguments);
        EXPECT_EQ(end(first), status);
    }
}

TEST_F(Program, SaysThatNoDisplayAnswers)
{
    auto environment = first.processEnvironment();
    environment.remove("QT_QPA_PLATFORM");
    environment.insert("DISPLAY", ":9999");
    environment.insert("WAYLAND_DISPLAY", "/nonexistent");
    first.setProcessEnvironment(environment);
    start(first, "--show panel");
    EXPECT_EQ(end(first), 1);
    EXPECT_EQ(first.readAllStandardError(), "velmora-ui: there is no display\n");
}

TEST_F(Program, DrawsAPictureOfTheApplicationsValues)
{
    const TemporaryFolder folder;
    const auto draw = [&](double percentage) {
        const auto file = QString::fromStdString(folder.path() / "panel.png");
        application.properties = {{"percentage", percentage}};
        start(first, "--picture " + file + " --window panel");
        EXPECT_EQ(end(first), 0);
        EXPECT_FALSE(first.readAllStandardError().contains("raise()")) << "nothing is brought to the front";
        return QImage(file);
    };
    const auto some = draw(12);
    EXPECT_EQ(some.size(), QSize(320, 450));
    EXPECT_LT(some.pixelColor(160, 445).lightness(), 64) << "dark, as the environment asks";
    EXPECT_NE(some, draw(87));
    EXPECT_EQ(some, draw(12));
}

} // namespace
} // namespace velmora
