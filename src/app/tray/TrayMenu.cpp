// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayMenu.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

namespace velmora {

namespace {

constexpr auto interface = "com.canonical.dbusmenu";
constexpr std::int32_t root = 0; // the entries follow, counted from 1
constexpr std::uint32_t revision = 1;
constexpr std::size_t maximumErrors = 64; ///< unknown identifiers that are reported back

void open(sd_bus_message* message, char type, const char* contents)
{
    dbus::check(sd_bus_message_open_container(message, type, contents), "open a container");
}

void close(sd_bus_message* message)
{
    dbus::check(sd_bus_message_close_container(message), "close a container");
}

std::span<const std::int32_t> readIds(sd_bus_message* call)
{
    const void* ids = nullptr;
    std::size_t bytes = 0;
    dbus::check(sd_bus_message_read_array(call, 'i', &ids, &bytes), "read identifiers");
    return {static_cast<const std::int32_t*>(ids), bytes / sizeof(std::int32_t)};
}

void append(sd_bus_message* message, const std::vector<std::int32_t>& ids)
{
    dbus::check(sd_bus_message_append_array(message, 'i', ids.data(), ids.size() * sizeof(std::int32_t)),
                "append identifiers");
}

void append(sd_bus_message* message, const std::variant<std::string, bool, std::int32_t>& value)
{
    const auto* text = std::get_if<std::string>(&value);
    const auto* number = std::get_if<std::int32_t>(&value);
    const int appended = text     ? sd_bus_message_append(message, "v", "s", text->c_str())
                         : number ? sd_bus_message_append(message, "v", "i", *number)
                                  : sd_bus_message_append(message, "v", "b", std::get<bool>(value));
    dbus::check(appended, "append a property");
}

} // namespace

const sd_bus_vtable TrayMenu::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("GetLayout", SD_BUS_ARGS("i", parentId, "i", recursionDepth, "as", propertyNames),
                            SD_BUS_RESULT("u", revision, "(ia{sv}av)", layout),
                            (dbus::serve<TrayMenu, &TrayMenu::getLayout>), SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("GetGroupProperties", SD_BUS_ARGS("ai", ids, "as", propertyNames),
                            SD_BUS_RESULT("a(ia{sv})", properties),
                            (dbus::serve<TrayMenu, &TrayMenu::getGroupProperties>),
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("GetProperty", SD_BUS_ARGS("i", id, "s", name), SD_BUS_RESULT("v", value),
                            (dbus::serve<TrayMenu, &TrayMenu::getProperty>), SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("Event", SD_BUS_ARGS("i", id, "s", eventId, "v", data, "u", timestamp),
                            SD_BUS_NO_RESULT, (dbus::serve<TrayMenu, &TrayMenu::event>),
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("EventGroup", SD_BUS_ARGS("a(isvu)", events), SD_BUS_RESULT("ai", idErrors),
                            (dbus::serve<TrayMenu, &TrayMenu::eventGroup>), SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("AboutToShow", SD_BUS_ARGS("i", id), SD_BUS_RESULT("b", needUpdate),
                            (dbus::serve<TrayMenu, &TrayMenu::aboutToShow>), SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("AboutToShowGroup", SD_BUS_ARGS("ai", ids),
                            SD_BUS_RESULT("ai", updatesNeeded, "ai", idErrors),
                            (dbus::serve<TrayMenu, &TrayMenu::aboutToShowGroup>), SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Version", "u", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("TextDirection", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Status", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconThemePath", "as", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_SIGNAL_WITH_NAMES("LayoutUpdated", "ui", SD_BUS_PARAM(revision) SD_BUS_PARAM(parent), 0),
    SD_BUS_SIGNAL_WITH_NAMES("ItemsPropertiesUpdated", "a(ia{sv})a(ias)",
                             SD_BUS_PARAM(updatedProps) SD_BUS_PARAM(removedProps), 0),
    SD_BUS_VTABLE_END,
};

TrayMenu::TrayMenu(sd_bus* bus, std::vector<Entry> entries) : bus_(bus), entries_(std::move(entries))
{
    dbus::check(sd_bus_add_object_vtable(bus, out(object_), path, interface, vtable_, this), interface);
}

bool TrayMenu::isKnown(std::int32_t id) const
{
    return id >= root && static_cast<std::size_t>(id) <= entries_.size();
}

const TrayMenu::Entry& TrayMenu::entry(std::int32_t id) const
{
    return entries_[static_cast<std::size_t>(id) - 1];
}

int TrayMenu::refuse(sd_bus_message* call, std::int32_t id) const
{
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "no item %d", id);
}

TrayMenu::Properties TrayMenu::properties(std::int32_t id) const
{
    if (id == root) return {{"children-display", "submenu"}};
    const auto& one = entry(id);
    if (one.label.empty()) return {{"type", "separator"}};
    Properties all{{"label", one.label}, {"enabled", one.isEnabled}};
    if (one.mark == Entry::Mark::none) return all;
    all.emplace_back("toggle-type", one.mark == Entry::Mark::radio ? "radio" : "checkmark");
    all.emplace_back("toggle-state", std::int32_t{one.isMarked});
    return all;
}

/// All properties, whichever the host named: they are few, and it ignores the rest.
void TrayMenu::appendProperties(sd_bus_message* reply, std::int32_t id) const
{
    open(reply, 'a', "{sv}");
    for (const auto& [name, value] : properties(id)) {
        open(reply, 'e', "sv");
        dbus::check(sd_bus_message_append(reply, "s", name), "append a property");
        append(reply, value);
        close(reply);
    }
    close(reply);
}

void TrayMenu::appendItem(sd_bus_message* reply, std::int32_t id, bool withChildren) const
{
    open(reply, 'r', "ia{sv}av");
    dbus::check(sd_bus_message_append(reply, "i", id), "append an item");
    appendProperties(reply, id);
    open(reply, 'a', "v");
    for (std::int32_t child = 1; withChildren && id == root && isKnown(child); ++child) {
        open(reply, 'v', "(ia{sv}av)");
        appendItem(reply, child, false);
        close(reply);
    }
    close(reply);
    close(reply);
}

int TrayMenu::getLayout(sd_bus_message* call)
{
    std::int32_t parent = 0, depth = 0;
    dbus::check(sd_bus_message_read(call, "ii", &parent, &depth), "read a question");
    if (!isKnown(parent)) return refuse(call, parent);
    isRead_ = true;
    const auto reply = dbus::replyTo(call);
    dbus::check(sd_bus_message_append(reply.get(), "u", revision), "append a revision");
    appendItem(reply.get(), parent, depth != 0);
    return dbus::send(reply);
}

int TrayMenu::getGroupProperties(sd_bus_message* call)
{
    const auto asked = readIds(call);
    const auto reply = dbus::replyTo(call);
    open(reply.get(), 'a', "(ia{sv})");
    for (std::int32_t id = root; isKnown(id); ++id) {
        if (!asked.empty() && std::ranges::find(asked, id) == asked.end()) continue;
        open(reply.get(), 'r', "ia{sv}");
        dbus::check(sd_bus_message_append(reply.get(), "i", id), "append an item");
        appendProperties(reply.get(), id);
        close(reply.get());
    }
    close(reply.get());
    return dbus::send(reply);
}

int TrayMenu::getProperty(sd_bus_message* call)
{
    std::int32_t id = 0;
    const char* name = nullptr;
    dbus::check(sd_bus_message_read(call, "is", &id, &name), "read a question");
    if (!isKnown(id)) return refuse(call, id);
    const auto all = properties(id);
    const auto found = std::ranges::find(all, std::string_view(name), &Properties::value_type::first);
    if (found != all.end()) {
        const auto reply = dbus::replyTo(call);
        append(reply.get(), found->second);
        return dbus::send(reply);
    }
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "item %d has no such property", id);
}

/// Each once, however often one message names it.
void TrayMenu::choose(const Ids& ids) const
{
    for (const auto id : ids)
        if (const auto one = entry(id); one.isEnabled && one.chosen) one.chosen();
}

void TrayMenu::show(std::vector<Entry> entries)
{
    const auto shown = std::exchange(entries_, std::move(entries));
    const auto looks = [](const Entry& one) {
        return std::tie(one.label, one.mark, one.isMarked, one.isEnabled);
    };
    Ids changed;
    for (std::size_t i = 0; i < std::min(shown.size(), entries_.size()); ++i)
        if (looks(shown[i]) != looks(entries_[i])) changed.push_back(static_cast<std::int32_t>(i + 1));
    if (isRead_ && !changed.empty()) announce(changed);
}

void TrayMenu::announce(const Ids& changed) const
{
    sd_bus_message* made = nullptr;
    const int created = sd_bus_message_new_signal(bus_, &made, path, interface, "ItemsPropertiesUpdated");
    const dbus::Message signal(made);
    if (created < 0) return; // a lost bus was logged when it was lost
    open(made, 'a', "(ia{sv})");
    for (const auto id : changed) {
        open(made, 'r', "ia{sv}");
        dbus::check(sd_bus_message_append(made, "i", id), "append an item");
        appendProperties(made, id);
        close(made);
    }
    close(made);
    dbus::check(sd_bus_message_append(made, "a(ias)", 0), "append nothing removed");
    sd_bus_send(bus_, made, nullptr);
}

int TrayMenu::event(sd_bus_message* call)
{
    std::int32_t id = 0;
    const char* what = nullptr;
    dbus::check(sd_bus_message_read(call, "is", &id, &what), "read an event");
    if (!isKnown(id)) return refuse(call, id);
    const int sent = sd_bus_reply_method_return(call, nullptr);
    if (id != root && what == std::string_view("clicked")) choose({id});
    return sent;
}

int TrayMenu::eventGroup(sd_bus_message* call)
{
    Ids chosen, unknown;
    dbus::check(sd_bus_message_enter_container(call, 'a', "(isvu)"), "read events");
    std::int32_t id = 0;
    const char* what = nullptr;
    while (dbus::check(sd_bus_message_enter_container(call, 'r', "isvu"), "read an event") > 0) {
        dbus::check(sd_bus_message_read(call, "is", &id, &what), "read an event");
        dbus::check(sd_bus_message_skip(call, "vu"), "read an event");
        dbus::check(sd_bus_message_exit_container(call), "read an event");
        if (!isKnown(id)) {
            if (unknown.size() < maximumErrors) unknown.push_back(id);
        } else if (id != root && what == std::string_view("clicked") &&
                   std::ranges::find(chosen, id) == chosen.end()) {
            chosen.push_back(id);
        }
    }
    const auto reply = dbus::replyTo(call);
    append(reply.get(), unknown);
    const int sent = dbus::send(reply);
    choose(chosen);
    return sent;
}

int TrayMenu::aboutToShow(sd_bus_message* call)
{
    std::int32_t id = 0;
    dbus::check(sd_bus_message_read(call, "i", &id), "read an identifier");
    return isKnown(id) ? sd_bus_reply_method_return(call, "b", false) : refuse(call, id);
}

int TrayMenu::aboutToShowGroup(sd_bus_message* call)
{
    Ids unknown;
    for (const auto id : readIds(call))
        if (!isKnown(id) && unknown.size() < maximumErrors) unknown.push_back(id);
    const auto reply = dbus::replyTo(call);
    append(reply.get(), Ids{});
    append(reply.get(), unknown);
    return dbus::send(reply);
}

int TrayMenu::property(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply, void*,
                       sd_bus_error*) noexcept
{
    const std::string_view name = property;
    if (name == "Version") return sd_bus_message_append(reply, "u", 3U);
    if (name == "IconThemePath") return sd_bus_message_append(reply, "as", 0U);
    return sd_bus_message_append(reply, "s", name == "TextDirection" ? "ltr" : "normal");
}

} // namespace velmora
