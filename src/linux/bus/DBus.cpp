// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "bus/DBus.h"

#include "base/Utf8.h"

#include <array>
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

template <typename T>
T readBasic(sd_bus_message* message, char type)
{
    T value{};
    check(sd_bus_message_read_basic(message, type, &value), "read a value");
    return value;
}

/// The value of a variant that was entered, which holds one of the four types.
KeyedArchive::Value readValue(sd_bus_message* message, char type)
{
    switch (type) {
    case 'b':
        return readBasic<int>(message, type) != 0;
    case 'x':
        return readBasic<std::int64_t>(message, type);
    case 'd':
        return readBasic<double>(message, type);
    default:
        return std::string(utf8Prefix(readBasic<const char*>(message, type), maximumTextBytes));
    }
}

/// `contents` of the variant ahead, if it is one of the four types.
bool isTaken(const char* contents)
{
    constexpr std::string_view taken = "bxds";
    return contents && contents[0] != '\0' && contents[1] == '\0' && taken.find(contents[0]) != taken.npos;
}

void readEntry(sd_bus_message* message, KeyedArchive& archive)
{
    const char* key = readBasic<const char*>(message, 's');
    const char* contents = nullptr;
    check(sd_bus_message_peek_type(message, nullptr, &contents), "look at a value");
    if (archive.values().size() >= maximumKeys || !isTaken(contents)) {
        check(sd_bus_message_skip(message, "v"), "skip a value");
        return;
    }
    const char type = contents[0];
    std::string name(utf8Prefix(key, maximumTextBytes));
    check(sd_bus_message_enter_container(message, 'v', contents), "enter a value");
    archive.encode(std::move(name), readValue(message, type));
    check(sd_bus_message_exit_container(message), "leave a value");
}

int shedCall(sd_bus_message* message, void*, sd_bus_error* error)
{
    std::uint64_t unsent = 0;
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
    sd_bus_get_n_queued_write(sd_bus_message_get_bus(message), &unsent);
    if (unsent <= mostUnsent) return 0;
    if (unsent > 2 * mostUnsent) return 1; // taken for answered
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

Slot match(sd_bus* bus, const std::string& rule, sd_bus_message_handler_t handler, void* self)
{
    Slot slot;
    check(sd_bus_add_match_async(bus, out(slot), rule.c_str(), handler, keepConnection, self),
          "sd_bus_add_match_async");
    return slot;
}

Slot watchName(sd_bus* bus, const std::string& name, sd_bus_message_handler_t handler, void* self)
{
    const std::string fromBus =
        std::string("sender='") + busName + "',path='" + busPath + "',interface='" + busName;
    return match(bus, "type='signal'," + fromBus + "',member='NameOwnerChanged',arg0='" + name + "'", handler,
                 self);
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

char typeOf(const KeyedArchive::Value& value)
{
    constexpr std::array types{'b', 'x', 'd', 's'}; // in the order of the variant
    static_assert(types.size() == std::variant_size_v<KeyedArchive::Value>);
    return types[value.index()];
}

void append(sd_bus_message* message, const KeyedArchive::Value& value)
{
    const auto basic = [&](const void* from) {
        check(sd_bus_message_append_basic(message, typeOf(value), from), "append a value");
    };
    if (const auto* text = std::get_if<std::string>(&value))
        basic(cleanUtf8(*text).c_str());
    else if (const auto* truth = std::get_if<bool>(&value))
        basic(std::array{int{*truth}}.data());
    else if (const auto* integer = std::get_if<std::int64_t>(&value))
        basic(integer);
    else
        basic(&std::get<double>(value));
}

void append(sd_bus_message* message, const KeyedArchive& archive)
{
    check(sd_bus_message_open_container(message, 'a', "{sv}"), "open a record");
    for (const auto& [key, value] : archive.values()) {
        const char type[] = {typeOf(value), '\0'};
        check(sd_bus_message_open_container(message, 'e', "sv"), "open an entry");
        check(sd_bus_message_append_basic(message, 's', cleanUtf8(key).c_str()), "append a key");
        check(sd_bus_message_open_container(message, 'v', type), "open a value");
        append(message, value);
        check(sd_bus_message_close_container(message), "close a value");
        check(sd_bus_message_close_container(message), "close an entry");
    }
    check(sd_bus_message_close_container(message), "close a record");
}

void append(sd_bus_message* message, const ChargingSettings& settings)
{
    for (const auto& setting : allSettings) append(message, setting.of(settings));
}

KeyedArchive readArchive(sd_bus_message* message)
{
    KeyedArchive archive;
    check(sd_bus_message_enter_container(message, 'a', "{sv}"), "enter a record");
    while (check(sd_bus_message_enter_container(message, 'e', "sv"), "enter an entry") > 0) {
        readEntry(message, archive);
        check(sd_bus_message_exit_container(message), "leave an entry");
    }
    check(sd_bus_message_exit_container(message), "leave a record");
    return archive;
}

ChargingSettings readSettings(sd_bus_message* message)
{
    ChargingSettings settings;
    for (const auto& setting : allSettings) {
        int truth = 0;
        double number = 0;
        void* const place = setting.isNumber() ? static_cast<void*>(&number) : &truth;
        check(sd_bus_message_read_basic(message, *setting.type(), place), setting.name);
        setting.assign(settings, setting.isNumber() ? KeyedArchive::Value(number) : truth != 0);
    }
    return settings;
}

} // namespace velmora::dbus
