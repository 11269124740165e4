// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "bus/NameOwner.h"
#include "platform/Complaints.h"
#include "tray/BatteryPicture.h"
#include "tray/TrayState.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

/// The tray icon as org.kde.StatusNotifierItem: an object on the session bus that hosts read and draw. It
/// announces itself to the watcher, and again to each one that comes later. Never waits for the bus. Loop's
/// thread only; callbacks may not destroy it.
class StatusNotifierItem {
public:
    static constexpr auto path = "/StatusNotifierItem";

    /// `icons` is the folder that holds the themes with our icons, empty where they are not installed: hosts
    /// then draw the pictures that they are given. Throws std::system_error where `bus` is gone or something
    /// else is served at the path.
    StatusNotifierItem(MainLoop& loop, sd_bus* bus, Log& log, const std::string& icons);
    StatusNotifierItem(const StatusNotifierItem&) = delete;
    StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;

    /// Tells the hosts what changed, if anything. They are told of the icon anew when the desktop turns dark
    /// or light, since some keep it in the colours of before.
    void show(const TrayState& state);

    /// Whether a watcher has taken it, and a host is there to draw what the watcher takes.
    bool isShown() const { return isRegistered_ && hasHost_; }
    /// It is shown now, or no longer.
    std::function<void()> onChanged;

    /// A click, and where on the screen it was: nothing where the host cannot know that.
    std::function<void(std::optional<ScreenPoint>)> onActivate;
    std::string takeActivationToken() { return std::exchange(activationToken_, {}); }

private:
    using Pictures = std::vector<std::pair<int, std::vector<std::uint8_t>>>; ///< size and bytes

    void announce();
    void askForHost();
    void lose();
    int watcherChanged(sd_bus_message* signal);
    int hostsChanged(sd_bus_message* signal);
    int registered(sd_bus_message* reply);
    int hostAnswered(sd_bus_message* reply);
    int settingChanged(sd_bus_message* signal);
    void tell(const char* signal) const;
    int disconnected(sd_bus_message* signal);

    int activate(sd_bus_message* call);
    int scroll(sd_bus_message* call);
    int provideActivationToken(sd_bus_message* call);

    std::string iconName() const;
    int answer(std::string_view property, sd_bus_message* reply);
    const Pictures& pictures();
    int appendPictures(sd_bus_message* reply);
    static int property(sd_bus* bus, const char* path, const char* interface, const char* property,
                        sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;
    static const sd_bus_vtable vtable_[];

    MainLoop& loop_;
    sd_bus* bus_;
    Complaints complaints_;
    std::string icons_;
    TrayState state_;
    Pictures pictures_; ///< of the state; empty until requested
    std::string activationToken_;
    std::string watcher_; ///< unique name; empty: none known
    bool isRegistered_ = false;
    bool hasHost_ = false;
    bool isQuestionDue_ = false; ///< something changed since the last question for a host
    MainLoop::Timer pause_;      ///< until we may ask again
    NameOwner portal_;           ///< who says that the desktop turns dark or light
    dbus::Slot object_, disconnection_, watcherChanges_, hostCame_, hostLeft_, settings_, registration_,
        question_;
};

} // namespace velmora
