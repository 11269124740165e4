// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Display.h"

#include "base/Descriptor.h"
#include "base/Handle.h"

#include <QDir>
#include <QFile>
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

} // namespace

bool isDisplayThere()
{
    return qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || doesWaylandAnswer() || doesXAnswer();
}

} // namespace velmora
