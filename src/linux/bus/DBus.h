// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "base/Handle.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>

/// The little that both ends of the wire need on top of sd-bus. A connection belongs to the thread of the
/// loop that it is attached to.
namespace velmora::dbus {

using Bus = Handle<sd_bus, sd_bus_close_unref>;
/// A match, an object or a call that waits for its answer: dropped, it is over and calls nothing any more.
using Slot = Handle<sd_bus_slot, sd_bus_slot_unref>;
using Message = Handle<sd_bus_message, sd_bus_message_unref>;

/// Throws std::system_error for a negative `result`, which is then an errno; else gives it back.
int check(int result, const char* what);

/// Connects to the system bus, or to the one that DBUS_SYSTEM_BUS_ADDRESS names, without waiting for it; nor
/// does the end of the loop or of the connection wait: what the bus has not taken by then is lost.
/// Throws std::system_error where there is none.
Bus openSystemBus(const EventLoop& loop);
/// Likewise the user's session bus, the one that DBUS_SESSION_BUS_ADDRESS names or the one in
/// XDG_RUNTIME_DIR.
Bus openSessionBus(const EventLoop& loop);

/// With more messages than that waiting to be sent a method call is answered with
/// org.freedesktop.DBus.Error.LimitsExceeded, with twice as many not at all.
inline constexpr std::uint64_t mostUnsent = 256;
/// Has the connection keep to that as long as it lasts: however fast its callers ask, and however slowly they
/// read, what waits for them stays small.
void shedFloods(sd_bus* bus);

/// Calls `handler` once should the connection end. The match is local: the bus is not asked for it.
Slot onDisconnected(sd_bus* bus, sd_bus_message_handler_t handler, void* self);

/// Which signals to deliver: those of which every part that is given holds. The parts are names and paths,
/// not text from outside.
struct SignalRule {
    std::string sender{}; ///< any peer may send us a signal all the same: see NameOwner
    std::string path{};
    std::string interface {
    };
    std::string member{};
    std::string arg0{};
};

/// Has the bus deliver the signals of `rule`. A bus that refuses the rule keeps the connection; the signals
/// are then missing.
Slot match(sd_bus* bus, const SignalRule& rule, sd_bus_message_handler_t handler, void* self);

/// The bus itself, as a service.
inline constexpr auto busName = "org.freedesktop.DBus";
inline constexpr auto busPath = "/org/freedesktop/DBus";

/// Has `handler` called with the bus's NameOwnerChanged whenever `name` gets, changes or loses its owner.
Slot watchName(sd_bus* bus, const std::string& name, sd_bus_message_handler_t handler, void* self);
/// The name's new owner, from a NameOwnerChanged; empty for none. Nothing where the signal is not the bus's
/// own: any peer may send us one, and sd-bus takes it for a match.
std::optional<std::string> newOwner(sd_bus_message* signal);

inline constexpr std::size_t maximumTextBytes = 4'096; ///< of a text that is read; the rest is cut off

/// What a peer said was wrong: its words, or the error's name where it gave none; no longer than a text may
/// be.
std::string textOf(const sd_bus_error& error);

/// A handle of one's own on a message that a callback was lent.
std::shared_ptr<sd_bus_message> keep(sd_bus_message* lent);

/// The only way in from C: calls `Method` of the object behind `self`. No exception leaves it; a method call
/// that met one is answered with an error.
template <typename Owner, int (Owner::*Method)(sd_bus_message*)>
int serve(sd_bus_message* message, void* self, sd_bus_error* error) noexcept
try {
    return (static_cast<Owner*>(self)->*Method)(message);
} catch (const std::exception& failure) {
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, failure.what());
}

// What follows throws std::system_error where the message is broken or memory is out.

/// A call of a method, to be filled and sent. The bus starts no service for it: one that does not run answers
/// with an error.
Message newCall(sd_bus* bus, const std::string& service, const char* path, const char* interface,
                const char* member);
/// Sends `call` and has `handler` called with the answer, or with an error after so many microseconds (0:
/// sd-bus's own 25 seconds). Drop the slot to be called no more.
Slot ask(sd_bus* bus, const Message& call, sd_bus_message_handler_t handler, void* self,
         std::uint64_t patience = 0);

/// The answer to `call`, to be filled and sent.
Message replyTo(sd_bus_message* call);
/// Hands the message to the connection that it was made for; never waits. Positive, as sd-bus wants it of a
/// method that was served.
int send(const Message& message);

} // namespace velmora::dbus
