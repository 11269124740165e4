// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "link/Failure.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <system_error>

/// Reading answers that may be anything.
namespace velmora::ctl {

/// Who is asked, as far as a person has to be told of it.
struct Respondent {
    /// For an error that `sender` has answered with.
    Failure (*failed)(const sd_bus_error& error, std::string_view sender);
    /// For an answer of another type than asked for.
    Failure (*nonsense)();
};

/// Calls `read` for an answer of that type. Nothing that `read` finds broken leaves as anything but a
/// Failure.
template <typename Read>
auto readAnswer(const Respondent& whose, const dbus::Message& reply, const char* type, Read read)
try {
    if (const auto* error = sd_bus_message_get_error(reply.get())) {
        const char* sender = sd_bus_message_get_sender(reply.get());
        throw whose.failed(*error, sender ? sender : "");
    }
    if (sd_bus_message_has_signature(reply.get(), type) <= 0) throw whose.nonsense();
    return read(reply.get());
} catch (const std::system_error&) {
    throw whose.nonsense();
}

inline bool isAnyOf(std::string_view error, std::initializer_list<std::string_view> names)
{
    return std::ranges::find(names, error) != names.end();
}

inline void enter(sd_bus_message* message, char type, const char* contents)
{
    dbus::check(sd_bus_message_enter_container(message, type, contents), "enter");
}

/// False where there is no more of that.
inline bool isEntered(sd_bus_message* message, char type, const char* contents)
{
    return dbus::check(sd_bus_message_enter_container(message, type, contents), "enter") > 0;
}

inline void leave(sd_bus_message* message)
{
    dbus::check(sd_bus_message_exit_container(message), "leave");
}

} // namespace velmora::ctl
