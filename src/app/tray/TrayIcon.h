// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "base/Lifetime.h"
#include "platform/Complaints.h"
#include "tray/TrayState.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>
#include <type_traits>

namespace velmora {

class StatusNotifierItem;
class TrayMenu;
class XEmbedIcon;

/// Velmora's icon in the desktop's tray, wherever that is: a StatusNotifierItem where a host shows those,
/// else an XEmbed icon where an X11 tray does, else none. It goes down that list only after `patience`
/// without the better way, and up as soon as a host appears; hosts and trays may come, go and restart at any
/// time.
///
/// Asleep unless something changes. Loop's thread only; the callbacks run on it and may not destroy this.
class TrayIcon {
public:
    static constexpr std::chrono::seconds usualPatience{2};

    /// An X server that went away is looked for again this often, after pauses that double from `patience`:
    /// for some eight minutes. One that is not back by then shall not wake the machine for ever.
    static constexpr int mostRetries = 7;

    /// `session` is the connection that the item is served on, attached to `loop`; null where there is no
    /// session bus. All of them must outlive the icon. Until `show` it is an empty battery.
    TrayIcon(EventLoop& loop, sd_bus* session, Log& log, std::chrono::milliseconds patience = usualPatience);
    ~TrayIcon();
    TrayIcon(const TrayIcon&) = delete;
    TrayIcon& operator=(const TrayIcon&) = delete;

    /// Redraws only what changed.
    void show(const TrayState& state);

    /// Whether some host shows it now.
    bool isShown() const;

    /// A click on the icon; the place is unknown where the host does not tell it.
    std::function<void(std::optional<ScreenPoint>)> onActivate;
    /// Chosen from the icon's menu.
    std::function<void()> onOpenPanel, onLaunchDashboard, onQuit;
    /// Called once, when it has turned out that no tray is there to show the icon, which the log then says.
    std::function<void()> onNoHost;

    /// What the host gave along with the last click, so that a window may come to the front under Wayland
    /// (for the environment's XDG_ACTIVATION_TOKEN). Empty for none; good for one window.
    std::string takeActivationToken();

private:
    void serveOn(sd_bus* session, Log& log);
    bool embed();
    void changed();
    void ascended();
    void descend();
    void giveUp();
    void tryAgainLater();
    template <typename... Arguments>
    static void tell(std::function<void(Arguments...)> told, std::type_identity_t<Arguments>... arguments)
    {
        if (told) told(arguments...);
    }

    Lifetime lifetime_;
    EventLoop& loop_;
    Complaints complaints_;
    std::chrono::milliseconds patience_;
    TrayState state_;
    std::unique_ptr<TrayMenu> menu_;
    std::unique_ptr<StatusNotifierItem> item_;
    std::unique_ptr<XEmbedIcon> embedded_;
    MainLoop::Timer next_; ///< step down the list
    int retries_ = 0;      ///< left to find the X server that went away
};

} // namespace velmora
