// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "StatusNotifierWatcher.h"

#include <algorithm>
#include <string_view>

namespace velmora {

namespace {

constexpr auto name = "org.kde.StatusNotifierWatcher"; // its interface, too
constexpr auto path = "/StatusNotifierWatcher";
constexpr auto usualItemPath = "/StatusNotifierItem";
constexpr std::string_view hostProperty = "IsStatusNotifierHostRegistered";
constexpr std::string_view versionProperty = "ProtocolVersion";

template <int (StatusNotifierWatcher::*Method)(sd_bus_message*)>
constexpr sd_bus_message_handler_t served = dbus::serve<StatusNotifierWatcher, Method>;

} // namespace

const sd_bus_vtable StatusNotifierWatcher::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("RegisterStatusNotifierItem", SD_BUS_ARGS("s", service), SD_BUS_NO_RESULT,
                            served<&StatusNotifierWatcher::registerItem>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("RegisterStatusNotifierHost", SD_BUS_ARGS("s", service), SD_BUS_NO_RESULT,
                            served<&StatusNotifierWatcher::registerHost>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("RegisteredStatusNotifierItems", "as", property, 0, 0),
    SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("ProtocolVersion", "i", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_SIGNAL_WITH_ARGS("StatusNotifierItemRegistered", SD_BUS_ARGS("s", service), 0),
    SD_BUS_SIGNAL_WITH_ARGS("StatusNotifierItemUnregistered", SD_BUS_ARGS("s", service), 0),
    SD_BUS_SIGNAL("StatusNotifierHostRegistered", "", 0),
    SD_BUS_SIGNAL("StatusNotifierHostUnregistered", "", 0),
    SD_BUS_VTABLE_END,
};

StatusNotifierWatcher::StatusNotifierWatcher(sd_bus* bus) : bus_(bus)
{
    dbus::check(sd_bus_add_object_vtable(bus_, out(object_), path, name, vtable_, this), name);
    losses_ =
        dbus::match(bus_, {.sender = dbus::busName, .interface = dbus::busName, .member = "NameOwnerChanged"},
                    served<&StatusNotifierWatcher::nameLost>, this);
    dbus::check(sd_bus_request_name(bus_, name, 0), name);
}

/// The argument is the item's path, or a name that its connection owns.
int StatusNotifierWatcher::registerItem(sd_bus_message* call)
{
    const char* argument = nullptr;
    dbus::check(sd_bus_message_read(call, "s", &argument), "read an item's address");
    const bool isPath = argument[0] == '/';
    const char* sender = sd_bus_message_get_sender(call);
    if (!sender || !(isPath ? sd_bus_object_path_is_valid(argument) : sd_bus_service_name_is_valid(argument)))
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "That is no item's address.");
    const ItemAddress item{sender, isPath ? argument : usualItemPath};
    if (std::ranges::count(items_, item)) return sd_bus_reply_method_return(call, nullptr);
    if (items_.size() >= maximumItems)
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_LIMITS_EXCEEDED, "The tray is full.");
    items_.push_back(item);
    announce("StatusNotifierItemRegistered", item);
    const int answered = sd_bus_reply_method_return(call, nullptr);
    if (onChanged) onChanged();
    return answered;
}

/// Another host may look on: it reads the list of items by itself.
int StatusNotifierWatcher::registerHost(sd_bus_message* call)
{
    return sd_bus_reply_method_return(call, nullptr);
}

int StatusNotifierWatcher::nameLost(sd_bus_message* signal)
{
    const auto owner = dbus::newOwner(signal);
    if (!owner || !owner->empty()) return 0;
    const char* lost = nullptr;
    dbus::check(sd_bus_message_rewind(signal, true), "read a name");
    dbus::check(sd_bus_message_read(signal, "s", &lost), "read a name");
    const auto gone = std::stable_partition(items_.begin(), items_.end(),
                                            [&](const ItemAddress& item) { return item.connection != lost; });
    if (gone == items_.end()) return 0;
    for (auto item = gone; item != items_.end(); ++item) announce("StatusNotifierItemUnregistered", *item);
    items_.erase(gone, items_.end());
    if (onChanged) onChanged();
    return 0;
}

void StatusNotifierWatcher::announce(const char* signal, const ItemAddress& item)
{
    dbus::check(sd_bus_emit_signal(bus_, path, name, signal, "s", item.text().c_str()), signal);
}

int StatusNotifierWatcher::property(sd_bus*, const char*, const char*, const char* asked,
                                    sd_bus_message* reply, void* self, sd_bus_error*) noexcept
{
    if (asked == hostProperty) return sd_bus_message_append(reply, "b", true);
    if (asked == versionProperty) return sd_bus_message_append(reply, "i", 0);
    int result = sd_bus_message_open_container(reply, 'a', "s");
    for (const auto& item : static_cast<StatusNotifierWatcher*>(self)->items_) {
        if (result >= 0) result = sd_bus_message_append(reply, "s", (item.connection + item.path).c_str());
    }
    return result < 0 ? result : sd_bus_message_close_container(reply);
}

} // namespace velmora
