// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "program/Program.h"

#include "base/Translation.h"
#include "base/Version.h"
#include "client/ApplicationLink.h"
#include "client/RemoteAccount.h"
#include "client/RemoteCalendar.h"
#include "client/RemoteFleet.h"
#include "client/RemoteInstallation.h"
#include "client/RemoteNotifications.h"
#include "client/RemoteVersionNotice.h"
#include "client/Widgets.h"
#include "desktop/Appearance.h"
#include "desktop/Display.h"
#include "desktop/Identity.h"
#include "program/CoreTranslator.h"
#include "program/NoHaptics.h"
#include "program/Requests.h"
#include "program/TerminationSignals.h"
#include "program/WindowsService.h"
#include "windows/Windows.h"
#include "wire/ModelFace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <malloc.h>
#include <string>

void qml_register_types_Velmora(); // keeps the linker from leaving them out

namespace velmora {

namespace {

/// For the application's values; a window that waited longer for them would open late.
constexpr std::chrono::milliseconds valuesPatience{30};
constexpr std::chrono::seconds picturePatience{10};
constexpr int forwardPatience = 2'000; // ms

/// Bytes; blocks from here on, most of them pictures, go back to the kernel once they are freed. Said so that
/// the C library does not raise it with each of them.
constexpr int largeBlock = 128 * 1024;
namespace face = wire::face;

int fail(const std::string& what, int status = 1)
{
    std::fprintf(stderr, "velmora-ui: %s\n", what.c_str());
    return status;
}

const char* methodFor(CommandLine::Command command)
{
    using namespace wire::windows;
    if (command == CommandLine::Command::toggle) return toggle;
    return command == CommandLine::Command::showInactive ? showInactive : show;
}

/// To the velmora-ui that runs already.
int forward(const QDBusConnection& bus, const CommandLine& wish)
{
    using namespace wire::windows;
    auto call = QDBusMessage::createMethodCall(
        QString::fromLatin1(serviceName), QString::fromLatin1(objectPath), QString::fromLatin1(interface),
        QString::fromLatin1(methodFor(wish.command)));
    call.setAutoStartService(false);
    QVariantList arguments{wish.window};
    const auto place = wish.click.value_or(QPoint(-1, -1));
    if (wish.command == CommandLine::Command::toggle) arguments << place.x() << place.y();
    if (wish.command != CommandLine::Command::showInactive)
        arguments << qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    call.setArguments(arguments);
    const auto reply = bus.call(call, QDBus::Block, forwardPatience);
    return reply.type() == QDBusMessage::ErrorMessage ? fail(reply.errorMessage().toStdString()) : 0;
}

/// Returns once the bus has taken what was said to it: QtDBus sends on another thread, which an exit cuts
/// off.
void awaitSent(const QDBusConnection& bus)
{
    auto ping =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                                       QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    bus.call(ping, QDBus::Block, forwardPatience);
}

/// All that lives while windows are shown.
class Program {
public:
    Program(const QDBusConnection& bus, TerminationSignals& signals_)
        : bus_(bus), link_(bus, model_), windows_(engine_, model_), service_(windows_)
    {
        engine_.addImportPath(QStringLiteral("qrc:/qt/qml"));
        link_.add(*singleton<RemoteInstallation>("InstallationManager"));
        link_.add(*singleton<RemoteVersionNotice>("VersionNotice"));
        link_.add(*singleton<RemoteCalendar>("CalendarContextManager"));
        link_.add(*singleton<RemoteNotifications>("Notifications"));
        link_.add(*singleton<RemoteFleet>("EcosystemSync"));
        link_.add(*singleton<RemoteAccount>("AppleAuthManager"));
        link_.add(*singleton<Widgets>("Widgets")->small());
        link_.add(*singleton<Widgets>("Widgets")->medium());
        QObject::connect(&signals_, &TerminationSignals::received, &windows_,
                         [] { QCoreApplication::exit(0); });
        QObject::connect(&link_, &ApplicationLink::gone, &windows_, [this] {
            QCoreApplication::exit(link_.hasMet() ? 0 : fail(tr("velmora is not running")));
        });
        signals_.listen();
    }

    int show(const CommandLine& wish)
    {
        if (!service_.publish(bus_)) return forward(bus_, wish);
        QObject::connect(&windows_, &Windows::allClosed, &windows_, [this] {
            awaitSent(bus_);
            QCoreApplication::exit(0);
        });
        passOn(*singleton<Requests>("Requests"));
        if (!open(wish)) return 1;
        whenReady([this] { windows_.release(); });
        QTimer::singleShot(valuesPatience, &windows_, &Windows::release);
        return QGuiApplication::exec();
    }

    int draw(const CommandLine& wish)
    {
        singleton<Appearance>("Appearance")->setOpaque();
        auto* notice = singleton<RemoteVersionNotice>("VersionNotice");
        notice->disconnect(SIGNAL(operationWanted(QString))); // nobody sees the window appear
        whenReady([this, wish] {
            windows_.picture(wish.window, wish.page, [wish](const QImage& image) {
                const bool isSaved = image.save(wish.picture, "PNG");
                QCoreApplication::exit(isSaved ? 0 : fail(tr("cannot write %1", wish.picture.toStdString())));
            });
        });
        QTimer::singleShot(picturePatience, &windows_, [] {
            QCoreApplication::exit(
                fail(tr("no picture: velmora does not answer, or the window was not drawn")));
        });
        return QGuiApplication::exec();
    }

private:
    bool open(const CommandLine& wish)
    {
        if (wish.command == CommandLine::Command::toggle) return windows_.toggle(wish.window, wish.click);
        return wish.command == CommandLine::Command::showInactive ? windows_.showInactive(wish.window)
                                                                  : windows_.show(wish.window);
    }

    template <typename T>
    T* singleton(const char* name)
    {
        return engine_.singletonInstance<T*>(qmlTypeId("Velmora", 1, 0, name));
    }

    void passOn(const Requests& requests)
    {
        QObject::connect(&requests, &Requests::dashboardWanted, &link_,
                         [this] { link_.activate(QString::fromLatin1(wire::face::dashboardAction)); });
        QObject::connect(&requests, &Requests::widgetWanted, &link_, [this](const QString& size) {
            link_.activate(
                QString::fromLatin1(size == "small" ? face::smallWidgetAction : face::mediumWidgetAction));
        });
        QObject::connect(&requests, &Requests::quitWanted, &link_, &ApplicationLink::quit);
        QObject::connect(&requests, &Requests::alignmentTapWanted, &link_,
                         [this] { haptics_.perform(Haptics::Pattern::alignment); });
    }

    /// Once the application's values and the desktop's wishes are known.
    void whenReady(const std::function<void()>& command)
    {
        auto* appearance = singleton<Appearance>("Appearance");
        const auto check = [this, appearance, command] {
            if (link_.isReady() && appearance->isSettled()) command();
        };
        QObject::connect(&link_, &ApplicationLink::ready, &windows_, check);
        QObject::connect(appearance, &Appearance::settled, &windows_, check);
    }

    QDBusConnection bus_;
    NoHaptics haptics_;
    RemoteModel model_;
    ApplicationLink link_;
    QQmlEngine engine_;
    Windows windows_;
    WindowsService service_;
};

} // namespace

int runWindows(int argc, char** argv)
{
    const auto read = CommandLine::parse(QStringList(argv + std::min(argc, 1), argv + argc));
    if (const auto* wrong = std::get_if<std::string>(&read)) return fail(tr("%1 See --help.", *wrong), 2);
    const auto& wish = std::get<CommandLine>(read);
    if (wish.command == CommandLine::Command::help)
        return std::fputs(CommandLine::usage().c_str(), stdout) < 0;
    if (wish.command == CommandLine::Command::version)
        return std::fputs(versionLine("velmora-ui").c_str(), stdout) < 0;
    if (!Windows::isKnown(wish.window))
        return fail(tr("there is no window \"%1\"", wish.window.toStdString()));
    const auto display = choosePlatform(presentDisplay());
    if (display.platform.isEmpty()) return fail(tr(display.reason.c_str()));

    mallopt(M_MMAP_THRESHOLD, largeBlock);
    QtLog::setUp();
    QtLog().debug("Display", "Windows open on \"" + display.platform.toStdString() + "\". " + display.reason);
    prepare(display);
    TerminationSignals signals_;
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(argc, argv);
    identifyWindows();
    QGuiApplication::setQuitOnLastWindowClosed(false); // a click on its way may mean the window that closed
    CoreTranslator translator;
    QGuiApplication::installTranslator(&translator);
    qml_register_types_Velmora();
    const auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return fail(tr("there is no session bus"));
    Program program(bus, signals_);
    return wish.command == CommandLine::Command::picture ? program.draw(wish) : program.show(wish);
}

} // namespace velmora
