// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "base/Lifetime.h"
#include "platform/Complaints.h"
#include "tray/TrayMenu.h"
#include "tray/TrayState.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>
#include <type_traits>
#include <vector>

namespace velmora {

class StatusNotifierItem;
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

    /// A lost X server is looked for again this often, after pauses that double from `patience`: for some
    /// eight minutes. After that the machine is not woken for it any more.
    static constexpr int maximumRetries = 7;

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

    /// A click on the icon; the place is nothing where the host does not give it.
    std::function<void(std::optional<ScreenPoint>)> onActivate;
    /// Chosen from the icon's menu.
    std::function<void()> onOpenPanel, onLaunchDashboard, onQuit;
    std::function<void(double limit)> onLimit;          ///< percent
    std::function<void()> onQuickCharge, onAutoProtect; ///< to be flipped
    /// Called once, when no tray has been found to show the icon; that is logged.
    std::function<void()> onNoHost;

    /// The activation token of the last click, with which one window may come to the front under Wayland
    /// (XDG_ACTIVATION_TOKEN). Empty for none.
    std::string takeActivationToken();

private:
    void serveOn(sd_bus* session, Log& log);
    std::vector<TrayMenu::Entry> menu();
    bool embed();
    void changed();
    void ascended();
    void descend();
    void giveUp();
    void tryAgainLater();
    template <typename... Arguments>
    static void call(std::function<void(Arguments...)> handler, std::type_identity_t<Arguments>... arguments)
    {
        if (handler) handler(arguments...);
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
