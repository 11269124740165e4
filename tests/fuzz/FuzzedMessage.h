// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Utf8.h"
#include "bus/DBus.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <sys/socket.h>

namespace velmora::fuzz {

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

    /// One of `words`, or any text that the bus lets through.
    std::string text(std::span<const char* const> words)
    {
        const auto choice = take<std::uint8_t>();
        if (choice < words.size()) return words[choice];
        std::string raw(choice > 250 ? 5'000 : choice, take<char>());
        for (std::size_t i = 0; i < raw.size() && left > 0; ++i) raw[i] = take<char>();
        std::ranges::replace(raw, '\0', ' ');
        return cleanUtf8(raw);
    }
};

/// A message to be filled, of a bus that leads nowhere.
inline dbus::Message newMessage()
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

inline void fillVariant(sd_bus_message* message, Input& input, std::span<const char* const> words)
{
    constexpr std::array types{"b", "x", "d", "s", "y", "i"};
    const std::string type = types[input.take<std::uint8_t>() % types.size()];
    const auto text = type == "s" ? input.text(words) : "";
    const auto bits = input.take<std::uint64_t>() & (type == "b" ? 1 : ~0ULL);
    sd_bus_message_open_container(message, 'v', type.c_str());
    sd_bus_message_append_basic(message, type[0],
                                type == "s" ? static_cast<const void*>(text.c_str()) : &bits);
    sd_bus_message_close_container(message);
}

/// An a{sv}; `entries` at most.
inline void fillRecord(sd_bus_message* message, Input& input, std::span<const char* const> words,
                       std::size_t entries = SIZE_MAX)
{
    sd_bus_message_open_container(message, 'a', "{sv}");
    for (; input.left > 0 && entries > 0; --entries) {
        sd_bus_message_open_container(message, 'e', "sv");
        sd_bus_message_append_basic(message, 's', input.text(words).c_str());
        fillVariant(message, input, words);
        sd_bus_message_close_container(message);
    }
    sd_bus_message_close_container(message);
}

/// Makes it fit to be read.
inline void seal(const dbus::Message& message)
{
    dbus::check(sd_bus_message_seal(message.get(), 1, 0), "seal");
    dbus::check(sd_bus_message_rewind(message.get(), true), "rewind");
}

} // namespace velmora::fuzz
