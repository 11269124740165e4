// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/ChargingCall.h"

namespace velmora {

namespace {

const char* errorFor(Refused why)
{
    if (why == Refused::invalid) return SD_BUS_ERROR_INVALID_ARGS;
    if (why == Refused::needsPassword) return SD_BUS_ERROR_INTERACTIVE_AUTHORIZATION_REQUIRED;
    return SD_BUS_ERROR_ACCESS_DENIED;
}

} // namespace

void answerRefusal(sd_bus_message* call, const Refusal& refusal)
{
    sd_bus_reply_method_errorf(call, errorFor(refusal.why), "%s", refusal.reason.c_str());
}

DaemonService::ChargingReply chargingReply(sd_bus_message* call)
{
    return [kept = dbus::keep(call)](const std::variant<bool, Refusal>& outcome) {
        if (const auto* refusal = std::get_if<Refusal>(&outcome)) return answerRefusal(kept.get(), *refusal);
        sd_bus_reply_method_return(kept.get(), "b", std::get<bool>(outcome));
    };
}

int controlCharging(Clients& clients, DaemonService& service, sd_bus_message* call, ChargingCommand command)
{
    clients.identify(call, [&service, command, reply = chargingReply(call)](const Caller& caller) {
        service.controlCharging(caller, command, reply);
    });
    return 1;
}

} // namespace velmora
