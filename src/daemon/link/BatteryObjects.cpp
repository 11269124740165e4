// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/BatteryObjects.h"

#include "bus/Records.h"
#include "link/Introspection.h"

#include <cstdlib>
#include <memory>

namespace velmora {

namespace {

using namespace wire::battery;

constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr auto introspectable = "org.freedesktop.DBus.Introspectable";

struct Freer {
    void operator()(char* text) const noexcept { std::free(text); }
};

/// Names of supplies may hold what paths may not: "macsmc-battery".
std::string pathOf(const std::string& name)
{
    std::unique_ptr<char, Freer> path;
    dbus::check(sd_bus_path_encode(folder, name.c_str(), out(path)), "name a battery");
    return path.get();
}

/// Appends `a{sa{sv}}`: the one interface with the battery's properties.
void appendInterfaces(sd_bus_message* message, const KeyedArchive& battery)
{
    dbus::check(sd_bus_message_open_container(message, 'a', "{sa{sv}}"), "open interfaces");
    dbus::check(sd_bus_message_open_container(message, 'e', "sa{sv}"), "open an interface");
    dbus::check(sd_bus_message_append(message, "s", BatteryReport::interface), "append");
    dbus::append(message, battery);
    dbus::check(sd_bus_message_close_container(message), "close an interface");
    dbus::check(sd_bus_message_close_container(message), "close interfaces");
}

} // namespace

BatteryObjects::BatteryObjects(sd_bus* bus, Clients& clients, DaemonService& service)
    : bus_(bus), clients_(clients), service_(service)
{
}

void BatteryObjects::publish()
{
    dbus::check(sd_bus_add_fallback(bus_, out(slot_), folder,
                                    dbus::serve<BatteryObjects, &BatteryObjects::asked>, this),
                "sd_bus_add_fallback");
}

BatteryObjects::Objects BatteryObjects::objects(const std::vector<BatteryReport>& batteries)
{
    Objects objects;
    for (const auto& battery : batteries) objects[pathOf(battery.name.value_or("_"))] = battery.archived();
    return objects;
}

int BatteryObjects::asked(sd_bus_message* call)
{
    if (sd_bus_message_is_method_call(call, introspectable, "Introspect") > 0)
        return clients_.answerFresh([this, kept = dbus::keep(call)] {
            clients_.attempt("describe a battery", [&] { answerIntrospection(kept.get()); });
        });
    const bool isFolder = sd_bus_message_get_path(call) == std::string_view(folder);
    return isFolder ? folderAsked(call) : propertiesAsked(call);
}

int BatteryObjects::folderAsked(sd_bus_message* call)
{
    if (sd_bus_message_is_method_call(call, managerInterface, getManagedObjects) <= 0) return 0;
    return clients_.answerFresh([this, kept = dbus::keep(call)] {
        clients_.attempt("answer with the batteries", [&] { answerObjects(kept.get()); });
    });
}

int BatteryObjects::propertiesAsked(sd_bus_message* call)
{
    const bool isOne = sd_bus_message_is_method_call(call, propertiesInterface, "Get") > 0;
    if (!isOne && sd_bus_message_is_method_call(call, propertiesInterface, "GetAll") <= 0) return 0;
    const char* interface = "";
    const char* name = "";
    dbus::check(isOne ? sd_bus_message_read(call, "ss", &interface, &name)
                      : sd_bus_message_read(call, "s", &interface),
                "read a call");
    const std::string_view wanted = interface;
    if (!wanted.empty() && wanted != BatteryReport::interface)
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_INTERFACE, "no such interface");
    if (isOne && !*name)
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_PROPERTY, "no such property");
    return clients_.answerFresh([this, kept = dbus::keep(call), name = std::string(name)] {
        clients_.attempt("answer with a battery", [&] { answerProperties(kept.get(), name); });
    });
}

void BatteryObjects::answerObjects(sd_bus_message* call)
{
    const auto reply = dbus::replyTo(call);
    changed(service_.batteries()); // nobody is told what is not announced
    dbus::check(sd_bus_message_open_container(reply.get(), 'a', "{oa{sa{sv}}}"), "open objects");
    for (const auto& [path, battery] : announced_) {
        dbus::check(sd_bus_message_open_container(reply.get(), 'e', "oa{sa{sv}}"), "open an object");
        dbus::check(sd_bus_message_append(reply.get(), "o", path.c_str()), "append");
        appendInterfaces(reply.get(), battery);
        dbus::check(sd_bus_message_close_container(reply.get()), "close an object");
    }
    dbus::check(sd_bus_message_close_container(reply.get()), "close objects");
    dbus::send(reply);
}

void BatteryObjects::answerIntrospection(sd_bus_message* call)
{
    const std::string path = sd_bus_message_get_path(call);
    const auto known = objects(service_.batteries());
    std::vector<std::string> children;
    for (const auto& [child, battery] : known)
        children.push_back(child.substr(std::string_view(folder).size() + 1));
    if (path == folder)
        sd_bus_reply_method_return(call, "s", batteryFolderIntrospection(children).c_str());
    else if (known.contains(path))
        sd_bus_reply_method_return(call, "s", batteryIntrospection().c_str());
    else
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "no such battery");
}

/// All of them without a name.
void BatteryObjects::answerProperties(sd_bus_message* call, const std::string& name)
{
    changed(service_.batteries());
    const auto battery = announced_.find(sd_bus_message_get_path(call));
    if (battery == announced_.end()) {
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "no such battery");
        return;
    }
    const auto reply = dbus::replyTo(call);
    if (name.empty()) {
        dbus::append(reply.get(), battery->second);
    } else if (const auto* value = battery->second.find(name)) {
        const char type[] = {dbus::typeOf(*value), '\0'};
        dbus::check(sd_bus_message_open_container(reply.get(), 'v', type), "open a value");
        dbus::append(reply.get(), *value);
        dbus::check(sd_bus_message_close_container(reply.get()), "close a value");
    } else {
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_PROPERTY, "not known of this battery");
        return;
    }
    dbus::send(reply);
}

void BatteryObjects::changed(const std::vector<BatteryReport>& batteries)
{
    Objects now = objects(batteries);
    for (const auto& [path, battery] : announced_)
        if (!now.contains(path)) announceGone(path);
    for (const auto& [path, battery] : now) {
        const auto before = announced_.find(path);
        if (before == announced_.end())
            announceNew(path, battery);
        else if (before->second != battery)
            announceChanges(path, before->second, battery);
    }
    announced_ = std::move(now);
}

void BatteryObjects::announceNew(const std::string& path, const KeyedArchive& battery)
{
    clients_.send("announce a battery", {managerInterface, "InterfacesAdded", folder}, [&](auto* signal) {
        dbus::check(sd_bus_message_append(signal, "o", path.c_str()), "append");
        appendInterfaces(signal, battery);
    });
}

void BatteryObjects::announceGone(const std::string& path)
{
    clients_.send("announce a battery", {managerInterface, "InterfacesRemoved", folder}, [&](auto* signal) {
        dbus::check(sd_bus_message_append(signal, "oas", path.c_str(), 1, BatteryReport::interface),
                    "append");
    });
}

void BatteryObjects::announceChanges(const std::string& path, const KeyedArchive& before,
                                     const KeyedArchive& now)
{
    KeyedArchive changes;
    for (const auto& [name, value] : now.values()) {
        const auto* old = before.find(name);
        if (!old || *old != value) changes.encode(name, value);
    }
    const Clients::Signal signal{propertiesInterface, "PropertiesChanged", path.c_str()};
    clients_.send("announce a battery", signal, [&](auto* message) {
        dbus::check(sd_bus_message_append(message, "s", BatteryReport::interface), "append");
        dbus::append(message, changes);
        dbus::check(sd_bus_message_open_container(message, 'a', "s"), "open names");
        for (const auto& [name, value] : before.values())
            if (!now.find(name)) dbus::check(sd_bus_message_append(message, "s", name.c_str()), "append");
        dbus::check(sd_bus_message_close_container(message), "close names");
    });
}

} // namespace velmora
