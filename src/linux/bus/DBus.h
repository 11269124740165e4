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

/// Helpers on top of sd-bus for both ends of the wire. A connection belongs to the thread of the loop that it
/// is attached to.
namespace velmora::dbus {

using Bus = Handle<sd_bus, sd_bus_close_unref>;
/// A match, an exported object or a pending call; ends when it is destroyed, and calls nothing any more.
using Slot = Handle<sd_bus_slot, sd_bus_slot_unref>;
using Message = Handle<sd_bus_message, sd_bus_message_unref>;

/// Throws std::system_error for a negative `result`, a negated errno; otherwise returns it.
int check(int result, const char* what);

/// Connects to the system bus, or to the one that DBUS_SYSTEM_BUS_ADDRESS names. Neither this nor the end of
/// the loop or of the connection blocks: messages that are unsent by then are lost. Throws std::system_error
/// where there is no bus.
Bus openSystemBus(const EventLoop& loop);
/// Likewise the user's session bus, the one that DBUS_SESSION_BUS_ADDRESS names or the one in
/// XDG_RUNTIME_DIR.
Bus openSessionBus(const EventLoop& loop);

/// Above this number of unsent messages a method call is answered with
/// org.freedesktop.DBus.Error.LimitsExceeded, above twice the number not at all.
inline constexpr std::uint64_t maximumUnsent = 256;
/// Applies that limit to a connection as long as it lasts, so that its queue stays small, however fast its
/// callers ask and however slowly they read.
void shedFloods(sd_bus* bus);

/// Calls `handler` once if the connection ends. The match is local and needs no request to the bus.
Slot onDisconnected(sd_bus* bus, sd_bus_message_handler_t handler, void* self);

/// Which signals to deliver: those that match every part given. The parts are names and paths of ours, not
/// text from outside.
struct SignalRule {
    std::string sender{}; ///< does not keep other peers from sending: see NameOwner
    std::string path{};
    std::string interface {
    };
    std::string member{};
    std::string arg0{};
};

/// Subscribes to the signals of `rule`. If the bus refuses the rule the connection stays, without those
/// signals.
Slot match(sd_bus* bus, const SignalRule& rule, sd_bus_message_handler_t handler, void* self);

/// The bus itself, as a service.
inline constexpr auto busName = "org.freedesktop.DBus";
inline constexpr auto busPath = "/org/freedesktop/DBus";

/// Calls `handler` with the bus's NameOwnerChanged whenever `name` gains, changes or loses its owner.
Slot watchName(sd_bus* bus, const std::string& name, sd_bus_message_handler_t handler, void* self);
/// The name's new owner, from a NameOwnerChanged; empty for none. Nothing where the signal is not the bus's
/// own: any peer may send us one, and sd-bus takes it for a match.
std::optional<std::string> newOwner(sd_bus_message* signal);

inline constexpr std::size_t maximumTextBytes = 4'096; ///< of a text that is read; the rest is cut off

/// A peer's error message, or the error's name where there is no message; at most `maximumTextBytes`
/// long.
std::string textOf(const sd_bus_error& error);

/// A new reference to a message that a callback was lent.
std::shared_ptr<sd_bus_message> keep(sd_bus_message* lent);

/// The only callback for sd-bus: calls `Method` of the object at `self`. No exception leaves it; a method
/// call that threw one is answered with an error.
template <typename Owner, int (Owner::*Method)(sd_bus_message*)>
int serve(sd_bus_message* message, void* self, sd_bus_error* error) noexcept
try {
    return (static_cast<Owner*>(self)->*Method)(message);
} catch (const std::exception& failure) {
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, failure.what());
}

// All that follow throw std::system_error where the message is broken or memory runs out.

/// A method call, to be filled and sent. It starts no service: without one that runs the answer is an
/// error.
Message newCall(sd_bus* bus, const std::string& service, const char* path, const char* interface,
                const char* member);
/// Sends `call` and calls `handler` with the answer, or with an error after this many microseconds (0:
/// sd-bus's default of 25 seconds). Destroy the slot to cancel.
Slot ask(sd_bus* bus, const Message& call, sd_bus_message_handler_t handler, void* self,
         std::uint64_t patience = 0);

/// The answer to `call`, to be filled and sent.
Message replyTo(sd_bus_message* call);
/// Queues the message on the connection that it was made for; never blocks. Returns a positive number, as
/// sd-bus expects it of a method that was served.
int send(const Message& message);

} // namespace velmora::dbus
