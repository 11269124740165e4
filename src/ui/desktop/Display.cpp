// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Display.h"

#include "base/Descriptor.h"
#include "base/Handle.h"
#include "desktop/Layers.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QLoggingCategory>
#include <QVersionNumber>
#include <algorithm>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace velmora {

namespace {

bool doesXAnswer()
{
    if (!qEnvironmentVariableIsSet("DISPLAY")) return false;
    const Handle<xcb_connection_t, xcb_disconnect> server(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(server.get()) == 0;
}

bool isListening(const QByteArray& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= qsizetype{sizeof address.sun_path}) return false;
    std::ranges::copy(path, address.sun_path);
    const Descriptor<::close> socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool doesWaylandAnswer()
{
    if (qEnvironmentVariableIsSet("WAYLAND_SOCKET")) return true; // connected already
    if (!qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) return false;
    const QDir runtime(qEnvironmentVariable("XDG_RUNTIME_DIR"));
    return isListening(QFile::encodeName(runtime.filePath(qEnvironmentVariable("WAYLAND_DISPLAY"))));
}

/// By their files, since Qt aborts the process where it cannot load the one that it is told to.
QStringList installedPlatforms()
{
    QStringList folders{qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH")};
    for (const auto& path : QCoreApplication::libraryPaths()) folders += path + "/platforms";
    QStringList platforms;
    for (const auto& folder : folders) {
        if (folder.isEmpty()) continue;
        for (const auto& file : QDir(folder).entryList({QStringLiteral("libq*.so")}, QDir::Files)) {
            const auto plugin = file.mid(4, file.size() - 7);
            platforms += plugin.section('-', 0, 0); // "wayland-egl" and "wayland-generic" are both Wayland's
        }
    }
    return platforms;
}

/// Before, Qt draws the frame, which GNOME leaves to windows, only where it could draw by EGL.
bool needsBuffersForFrames()
{
    return QLibraryInfo::version() < QVersionNumber(6, 8);
}

/// Qt would load EGL, and with it a compiler for shaders, to find out that nobody draws by them: 50 MB.
void leaveOutBuffers()
{
    constexpr auto variable = "QT_WAYLAND_CLIENT_BUFFER_INTEGRATION";
    if (qEnvironmentVariableIsSet(variable)) return;
    qputenv(variable, "none");
    QLoggingCategory::setFilterRules(QStringLiteral("qt.qpa.wayland.warning=false")); // it complains of that
}

} // namespace

DisplayFacts presentDisplay()
{
    return {.wanted = qEnvironmentVariable("QT_QPA_PLATFORM").split(';', Qt::SkipEmptyParts),
            .installed = installedPlatforms(),
            .doesWaylandAnswer = doesWaylandAnswer,
            .doesXAnswer = doesXAnswer,
            .hasLayers = layers::areOffered};
}

void prepare(const PlatformChoice& choice)
{
    qputenv("QT_QPA_PLATFORM", choice.platform.toUtf8());
    if (choice.layers) layers::use();
    const bool isGnome = qEnvironmentVariable("XDG_CURRENT_DESKTOP").contains(QLatin1String("GNOME"));
    if (choice.platform.startsWith(QLatin1String("wayland")) && !(isGnome && needsBuffersForFrames()))
        leaveOutBuffers();
    // A desktop's theme for Qt brings its libraries, KDE's 13 MB of them. All that is drawn here is our own,
    // and what a person has set comes from the settings portal.
    qputenv("XDG_CURRENT_DESKTOP", "");
    for (const auto* variable : {"KDE_FULL_SESSION", "GNOME_DESKTOP_SESSION_ID", "DESKTOP_SESSION"})
        qunsetenv(variable);
}

} // namespace velmora
