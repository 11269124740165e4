// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Utf8.h"
#include "bus/Records.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>

// Whatever well-formed message a peer composes, reading it as a record ends with a bounded record;
// and what was read survives being written and read again.

namespace {

using namespace velmora;

/// The fuzzer's bytes, zeros after their end.
struct Input {
    const std::uint8_t* bytes;
    std::size_t left;

    template <typename T>
    T take()
    {
        T value{};
        const std::size_t taken = std::min(left, sizeof value);
        std::memcpy(&value, bytes, taken);
        bytes += taken;
        left -= taken;
        return value;
    }

    std::string text()
    {
        constexpr std::array keys{"percentage",       "isCharging",      "powerSource",
                                  "timeToEmpty",      "timestamp",       "customChargeLimit",
                                  "customHysteresis", "lowBatteryLimit", "notifyOnHeat"};
        const auto choice = take<std::uint8_t>();
        if (choice < keys.size()) return keys[choice];
        std::string raw(choice > 250 ? 5'000 : choice, take<char>());
        for (std::size_t i = 0; i < raw.size() && left > 0; ++i) raw[i] = take<char>();
        return cleanUtf8(raw); // the bus lets nothing else through
    }
};

dbus::Message newMessage()
{
    static sd_bus* const bus = [] {
        std::array<int, 2> ends{};
        sd_bus* made = nullptr;
        dbus::check(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), "pair");
        dbus::check(sd_bus_new(&made), "new");
        dbus::check(sd_bus_set_fd(made, ends[0], ends[0]), "descriptor");
        dbus::check(sd_bus_start(made), "start");
        return made;
    }();
    sd_bus_message* message = nullptr;
    dbus::check(sd_bus_message_new_signal(bus, &message, "/a", "a.b", "c"), "message");
    return dbus::Message(message);
}

void fillVariant(sd_bus_message* message, Input& input)
{
    constexpr std::array types{"b", "x", "d", "s", "y", "i"};
    const std::string type = types[input.take<std::uint8_t>() % types.size()];
    const auto text = type == "s" ? input.text() : "";
    const auto bits = input.take<std::uint64_t>() & (type == "b" ? 1 : ~0ULL);
    sd_bus_message_open_container(message, 'v', type.c_str());
    sd_bus_message_append_basic(message, type[0],
                                type == "s" ? static_cast<const void*>(text.c_str()) : &bits);
    sd_bus_message_close_container(message);
}

void fillRecord(sd_bus_message* message, Input& input)
{
    sd_bus_message_open_container(message, 'a', "{sv}");
    while (input.left > 0) {
        sd_bus_message_open_container(message, 'e', "sv");
        sd_bus_message_append_basic(message, 's', input.text().c_str());
        fillVariant(message, input);
        sd_bus_message_close_container(message);
    }
    sd_bus_message_close_container(message);
}

void seal(const dbus::Message& message)
{
    dbus::check(sd_bus_message_seal(message.get(), 1, 0), "seal");
    dbus::check(sd_bus_message_rewind(message.get(), true), "rewind");
}

KeyedArchive sealedAndRead(const dbus::Message& message)
{
    seal(message);
    return dbus::readArchive(message.get());
}

bool isBounded(const KeyedArchive& archive)
{
    const auto isShort = [](const auto& entry) {
        const auto* text = std::get_if<std::string>(&entry.second);
        return !text || (text->size() <= dbus::maximumTextBytes && cleanUtf8(*text) == *text);
    };
    return archive.values().size() <= dbus::maximumKeys && std::ranges::all_of(archive.values(), isShort);
}

template <typename Record>
void requireSurvival(const Record& record)
{
    const auto message = newMessage();
    dbus::append(message.get(), record.archived());
    if (!(sealedAndRead(message) == record.archived())) std::abort();
}

/// Settings that come by their names: those that pass the checks are within range and survive the wire.
void requireSaneSettings(const KeyedArchive& archive)
{
    ChargingSettings settings;
    for (const auto& [name, value] : archive.values())
        if (const auto* setting = findSetting(name)) setting->assign(settings, value);
    if (problemWith(settings)) return;
    settings = clamped(settings);
    for (const auto& setting : allSettings) {
        const auto value = setting.of(settings);
        const auto* number = std::get_if<double>(&value);
        if (number && !(*number >= setting.lowest && *number <= setting.highest)) std::abort();
    }
    const auto message = newMessage();
    dbus::append(message.get(), settings);
    seal(message);
    if (!(dbus::readSettings(message.get()) == settings)) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    Input input{bytes, size};
    const auto message = newMessage();
    fillRecord(message.get(), input);
    const auto archive = sealedAndRead(message);
    if (!isBounded(archive)) std::abort();
    requireSurvival(HSBatteryState(archive));
    requireSurvival(HSHistorySnapshot(archive, Date{}));
    requireSaneSettings(archive);
    return 0;
}
