// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"

#include <functional>
#include <string>

namespace velmora {

/// org.freedesktop.Application: how launchers, a second start and the windows reach the running application.
/// Main thread only.
class ApplicationObject {
public:
    /// `bus` must outlive the object. Throws std::system_error where it takes no objects.
    explicit ApplicationObject(sd_bus* bus);
    ApplicationObject(const ApplicationObject&) = delete;
    ApplicationObject& operator=(const ApplicationObject&) = delete;

    /// `token` is the caller's activation token, with which a window may take the focus; may be empty.
    using Request = std::function<void(const std::string& token)>;

    Request onActivate; ///< started again
    /// A window of wire::windows is requested.
    std::function<void(const char* window, const std::string& token)> onWindow;
    std::function<void()> onQuit;

private:
    int activate(sd_bus_message* call);
    int open(sd_bus_message* call);
    int activateAction(sd_bus_message* call);
    static std::string token(sd_bus_message* call);

    dbus::Slot object_;
};

} // namespace velmora
