// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/DBus.h"

#include "base/Utf8.h"

#include <system_error>

namespace velmora::dbus {

namespace {

constexpr auto localPath = "/org/freedesktop/DBus/Local";
constexpr auto localName = "org.freedesktop.DBus.Local";

/// Without a handler sd-bus closes the connection when a match is refused.
int keepConnection(sd_bus_message*, void*, sd_bus_error*)
{
    return 0;
}

std::string textOf(const SignalRule& rule)
{
    std::string text = "type='signal'";
    const auto add = [&text](const char* key, const std::string& value) {
        if (!value.empty()) text.append(",").append(key).append("='").append(value).append("'");
    };
    add("sender", rule.sender);
    add("path", rule.path);
    add("interface", rule.interface);
    add("member", rule.member);
    add("arg0", rule.arg0);
    return text;
}

int shedCall(sd_bus_message* message, void*, sd_bus_error* error)
{
    std::uint64_t unsent = 0;
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
    sd_bus_get_n_queued_write(sd_bus_message_get_bus(message), &unsent);
    if (unsent <= maximumUnsent) return 0;
    if (unsent > 2 * maximumUnsent) return 1; // taken for answered
    return sd_bus_error_set(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "asked too often");
}

Bus attached(Bus bus, const EventLoop& loop)
{
    // Otherwise the end of the loop blocks until everything is sent, for ever on a bus that hangs.
    check(sd_bus_set_close_on_exit(bus.get(), false), "sd_bus_set_close_on_exit");
    check(sd_bus_attach_event(bus.get(), loop.handle(), SD_EVENT_PRIORITY_NORMAL), "sd_bus_attach_event");
    return bus;
}

} // namespace

int check(int result, const char* what)
{
    if (result < 0) throw std::system_error(-result, std::generic_category(), what);
    return result;
}

Bus openSystemBus(const EventLoop& loop)
{
    Bus bus;
    check(sd_bus_open_system(out(bus)), "cannot reach the system bus");
    return attached(std::move(bus), loop);
}

Bus openSessionBus(const EventLoop& loop)
{
    Bus bus;
    check(sd_bus_open_user(out(bus)), "cannot reach the session bus");
    return attached(std::move(bus), loop);
}

void shedFloods(sd_bus* bus)
{
    check(sd_bus_add_filter(bus, nullptr, shedCall, nullptr), "sd_bus_add_filter");
}

Slot onDisconnected(sd_bus* bus, sd_bus_message_handler_t handler, void* self)
{
    Slot slot;
    check(sd_bus_match_signal(bus, out(slot), localName, localPath, localName, "Disconnected", handler, self),
          "sd_bus_match_signal");
    return slot;
}

Slot match(sd_bus* bus, const SignalRule& rule, sd_bus_message_handler_t handler, void* self)
{
    Slot slot;
    check(sd_bus_add_match_async(bus, out(slot), textOf(rule).c_str(), handler, keepConnection, self),
          "sd_bus_add_match_async");
    return slot;
}

Slot watchName(sd_bus* bus, const std::string& name, sd_bus_message_handler_t handler, void* self)
{
    return match(bus,
                 {.sender = busName,
                  .path = busPath,
                  .interface = busName,
                  .member = "NameOwnerChanged",
                  .arg0 = name},
                 handler, self);
}

std::optional<std::string> newOwner(sd_bus_message* signal)
{
    const char* sender = sd_bus_message_get_sender(signal);
    const char* owner = nullptr;
    if (!sender || sender != std::string_view(busName)) return std::nullopt;
    if (sd_bus_message_read(signal, "sss", nullptr, nullptr, &owner) < 0) return std::nullopt;
    return owner;
}

std::string textOf(const sd_bus_error& error)
{
    return std::string(utf8Prefix(error.message ? error.message : error.name, maximumTextBytes));
}

std::shared_ptr<sd_bus_message> keep(sd_bus_message* lent)
{
    return {sd_bus_message_ref(lent), Releaser<sd_bus_message_unref>{}};
}

Message newCall(sd_bus* bus, const std::string& service, const char* path, const char* interface,
                const char* member)
{
    Message call;
    check(sd_bus_message_new_method_call(bus, out(call), service.c_str(), path, interface, member), member);
    check(sd_bus_message_set_auto_start(call.get(), false), member);
    return call;
}

Slot ask(sd_bus* bus, const Message& call, sd_bus_message_handler_t handler, void* self,
         std::uint64_t patience)
{
    Slot slot;
    const int result = sd_bus_call_async(bus, out(slot), call.get(), handler, self, patience);
    // The member is read afterwards, since sending moves the fields of a message.
    check(result, sd_bus_message_get_member(call.get()));
    return slot;
}

Message replyTo(sd_bus_message* call)
{
    Message reply;
    check(sd_bus_message_new_method_return(call, out(reply)), "cannot answer");
    return reply;
}

int send(const Message& message)
{
    return check(sd_bus_send(nullptr, message.get(), nullptr), "cannot send");
}

} // namespace velmora::dbus
