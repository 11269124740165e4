// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/Callers.h"

#include <utility>

namespace velmora {

namespace {

bool mayInteract(sd_bus_message* call)
{
    return sd_bus_message_get_allow_interactive_authorization(call) > 0;
}

} // namespace

Callers::Callers(sd_bus* bus, Log& log, Left left)
    : bus_(bus), complaints_(log, "DaemonObject"), left_(std::move(left))
{
}

void Callers::identify(sd_bus_message* call, Task task)
{
    const char* sender = sd_bus_message_get_sender(call);
    Known* const caller = sender ? known(sender) : nullptr;
    if (!caller) return refuse(call, SD_BUS_ERROR_LIMITS_EXCEEDED, "too many clients at once");
    if (caller->uid) return task(Caller{caller->busName, *caller->uid, mayInteract(call)});
    wait(*caller, Waiting{dbus::keep(call), std::move(task)});
}

Callers::Known* Callers::known(const std::string& name)
{
    if (const auto found = callers_.find(name); found != callers_.end()) return &found->second;
    if (callers_.size() >= maximumCallers) return nullptr;
    Known& caller = callers_.try_emplace(name, Known{*this, name, {}, {}, {}, {}}).first->second;
    try {
        ask(caller);
    } catch (const std::exception&) {
        callers_.erase(name);
        throw;
    }
    return &caller;
}

/// The match goes first: one who leaves after the answer is then certainly reported.
void Callers::ask(Known& caller)
{
    caller.departure =
        dbus::watchName(bus_, caller.busName, dbus::serve<Known, &Known::changedOwner>, &caller);
    dbus::check(sd_bus_call_method_async(bus_, out(caller.question), dbus::busName, dbus::busPath,
                                         dbus::busName, "GetConnectionUnixUser",
                                         dbus::serve<Known, &Known::answered>, &caller, "s",
                                         caller.busName.c_str()),
                "GetConnectionUnixUser");
}

void Callers::wait(Known& caller, Waiting message)
{
    if (caller.waiting.size() >= maximumWaiting) {
        const auto oldest = std::move(caller.waiting.front());
        caller.waiting.pop_front();
        refuse(oldest.call.get(), SD_BUS_ERROR_LIMITS_EXCEEDED, "too many messages before it was identified");
    }
    caller.waiting.push_back(std::move(message));
}

int Callers::Known::answered(sd_bus_message* reply)
{
    std::uint32_t user = 0;
    if (sd_bus_message_is_method_error(reply, nullptr) || sd_bus_message_read(reply, "u", &user) < 0) {
        callers.forget(*this);
        return 0;
    }
    uid = user;
    for (const auto& [call, task] : std::exchange(waiting, {}))
        task(Caller{busName, user, mayInteract(call.get())});
    return 0;
}

int Callers::Known::changedOwner(sd_bus_message* signal)
{
    if (dbus::newOwner(signal) == "") callers.forget(*this);
    return 0;
}

void Callers::forget(Known& caller)
{
    const auto gone = callers_.extract(caller.busName); // slots and all, at the end of this function
    for (const auto& [call, task] : gone.mapped().waiting)
        refuse(call.get(), SD_BUS_ERROR_ACCESS_DENIED, "sender disconnected before it was identified");
    if (gone.mapped().uid) left_(gone.key());
}

void Callers::refuse(sd_bus_message* call, const char* error, const char* reason)
{
    const char* sender = sd_bus_message_get_sender(call);
    complaints_.raise(reason, std::string("Dropped a message of ") + (sender ? sender : "an unknown sender") +
                                  ": " + reason + "; further ones are not logged.");
    sd_bus_reply_method_errorf(call, error, "%s", reason);
}

} // namespace velmora
