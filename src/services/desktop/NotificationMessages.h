// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "platform/NotificationCenter.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// What is said to a notification server of the desktop. All throw std::system_error where memory runs out or
/// the connection is gone.
namespace velmora::notifications {

inline constexpr auto serviceName = "org.freedesktop.Notifications"; ///< and that of its interface
inline constexpr auto objectPath = "/org/freedesktop/Notifications";

inline constexpr std::size_t maximumTitleBytes = 256, maximumBodyBytes = 1'024; ///< the rest is cut off

/// What a server can do, of what matters here.
struct Capabilities {
    bool readsMarkup = false;
    bool hasActions = false;
};
/// From the answer to GetCapabilities, whatever it is.
Capabilities readCapabilities(sd_bus_message* reply);

/// As whom notices appear.
struct Sender {
    std::string name;
    std::string desktopEntry; ///< and the icon's name
};

/// A call to `server`, a name on the bus, that starts none.
dbus::Message newCall(sd_bus* bus, const std::string& server, const char* member);

/// Shows `request` in the place of the notice with the number `replaced`, 0 for none.
dbus::Message newNotify(sd_bus* bus, const std::string& server, const Sender& sender,
                        const NotificationRequest& request, const Capabilities& capabilities,
                        std::uint32_t replaced);

/// `text` as it may be sent and shown: one line of valid UTF-8 without signs that act, at most `bytes` long.
std::string shownText(std::string_view text, std::size_t bytes);

} // namespace velmora::notifications
