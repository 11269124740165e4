// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"

#include <string>
#include <vector>

namespace velmora {

/// A desktop's tray on the bus: watcher and host in one, on a connection of its own.
class TrayHost {
public:
    bool hasHost = true;
    bool refuses = false;           ///< to take items
    int questions = 0;              ///< for a host
    std::vector<std::string> items; ///< connections that registered
    std::vector<std::string> news;  ///< signals of the items

    explicit TrayHost(const EventLoop& loop) : bus_(dbus::openSystemBus(loop))
    {
        dbus::check(sd_bus_add_object(bus_.get(), out(object_), "/StatusNotifierWatcher",
                                      dbus::serve<TrayHost, &TrayHost::called>, this),
                    "object");
        menuChanges_ = dbus::match(bus_.get(), {.interface = "com.canonical.dbusmenu"},
                                   dbus::serve<TrayHost, &TrayHost::told>, this);
        match_ = dbus::match(bus_.get(), {.interface = "org.kde.StatusNotifierItem"},
                             dbus::serve<TrayHost, &TrayHost::told>, this);
    }

    void appear() { dbus::check(sd_bus_request_name(bus_.get(), name, 0), "name"); }
    void disappear() { dbus::check(sd_bus_release_name(bus_.get(), name), "name"); }
    void say(const char* signal)
    {
        dbus::check(sd_bus_emit_signal(bus_.get(), "/StatusNotifierWatcher", name, signal, nullptr), signal);
    }
    sd_bus* bus() const { return bus_.get(); }

private:
    static constexpr auto name = "org.kde.StatusNotifierWatcher";

    int called(sd_bus_message* call)
    {
        if (sd_bus_message_is_method_call(call, name, "RegisterStatusNotifierItem") > 0) {
            items.emplace_back(sd_bus_message_get_sender(call));
            if (refuses)
                return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "not on my panel");
            return sd_bus_reply_method_return(call, nullptr);
        }
        ++questions;
        return sd_bus_reply_method_return(call, "v", "b", hasHost);
    }

    int told(sd_bus_message* signal)
    {
        news.emplace_back(sd_bus_message_get_member(signal));
        return 0;
    }

    dbus::Bus bus_;
    dbus::Slot object_, match_, menuChanges_;
};

} // namespace velmora
