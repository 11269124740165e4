// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace velmora {

/// The menu of a tray icon, which its host draws: com.canonical.dbusmenu, version 3, one level deep. Hosts
/// fetch it once and are told what changes in it. Loop's thread only.
class TrayMenu {
public:
    static constexpr auto path = "/MenuBar";

    struct Entry {
        enum class Mark : std::uint8_t { none, check, radio };

        std::string label{}; ///< UTF-8; empty for a line between two others
        Mark mark = Mark::none;
        bool isMarked = false;
        bool isEnabled = true;
        std::function<void()> chosen{};
    };

    /// Throws std::system_error where `bus` is gone or something else is served at the path.
    TrayMenu(sd_bus* bus, std::vector<Entry> entries);
    TrayMenu(const TrayMenu&) = delete;
    TrayMenu& operator=(const TrayMenu&) = delete;

    /// As many entries as before; tells the hosts which have changed.
    void show(std::vector<Entry> entries);

private:
    using Ids = std::vector<std::int32_t>;
    using Value = std::variant<std::string, bool, std::int32_t>;
    using Properties = std::vector<std::pair<const char*, Value>>;

    int getLayout(sd_bus_message* call);
    int getGroupProperties(sd_bus_message* call);
    int getProperty(sd_bus_message* call);
    int event(sd_bus_message* call);
    int eventGroup(sd_bus_message* call);
    int aboutToShow(sd_bus_message* call);
    int aboutToShowGroup(sd_bus_message* call);

    bool isKnown(std::int32_t id) const;
    const Entry& entry(std::int32_t id) const;
    int refuse(sd_bus_message* call, std::int32_t id) const;
    void appendItem(sd_bus_message* reply, std::int32_t id, bool withChildren) const;
    Properties properties(std::int32_t id) const;
    void appendProperties(sd_bus_message* reply, std::int32_t id) const;
    void announce(const Ids& changed) const;
    void choose(const Ids& ids) const;

    static int property(sd_bus* bus, const char* path, const char* interface, const char* property,
                        sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;
    static const sd_bus_vtable vtable_[];

    sd_bus* bus_;
    std::vector<Entry> entries_;
    bool isRead_ = false; ///< a host has fetched it
    dbus::Slot object_;
};

} // namespace velmora
