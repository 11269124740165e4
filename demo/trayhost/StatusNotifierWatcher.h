// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"

#include <functional>
#include <string>
#include <vector>

namespace velmora {

/// Where an item of the tray lives on the session bus.
struct ItemAddress {
    std::string connection; ///< unique name
    std::string path;

    std::string text() const { return connection + path; }
    friend bool operator==(const ItemAddress&, const ItemAddress&) = default;
};

/// `org.kde.StatusNotifierWatcher`: where the programs of a session register their tray items. Says that
/// there is a host, since who makes this is one. An item goes with the connection that registered it, and
/// nobody registers for another. Loop's thread only.
class StatusNotifierWatcher {
public:
    static constexpr std::size_t maximumItems = 32; ///< the next one is refused

    /// Throws std::system_error, with EEXIST where this session has a watcher already.
    explicit StatusNotifierWatcher(sd_bus* bus);
    StatusNotifierWatcher(const StatusNotifierWatcher&) = delete;
    StatusNotifierWatcher& operator=(const StatusNotifierWatcher&) = delete;

    /// In the order in which they came.
    const std::vector<ItemAddress>& items() const { return items_; }

    /// An item came or went.
    std::function<void()> onChanged;

private:
    int registerItem(sd_bus_message* call);
    int registerHost(sd_bus_message* call);
    int nameLost(sd_bus_message* signal);
    void announce(const char* signal, const ItemAddress& item);
    static int property(sd_bus* bus, const char* path, const char* interface, const char* name,
                        sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;

    static const sd_bus_vtable vtable_[];

    sd_bus* bus_;
    std::vector<ItemAddress> items_;
    dbus::Slot object_;
    dbus::Slot losses_;
};

} // namespace velmora
