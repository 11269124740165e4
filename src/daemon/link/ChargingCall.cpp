// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/ChargingCall.h"

namespace velmora {

int controlCharging(Clients& clients, DaemonService& service, sd_bus_message* call, ChargingCommand command)
{
    const auto reply = [kept = dbus::keep(call)](std::optional<bool> isAllowed) {
        if (isAllowed)
            sd_bus_reply_method_return(kept.get(), "b", *isAllowed);
        else
            sd_bus_reply_method_errorf(kept.get(), SD_BUS_ERROR_ACCESS_DENIED, "not authorised to do this");
    };
    clients.identify(call, [&service, command, reply](const Caller& caller) {
        service.controlCharging(caller, command, reply);
    });
    return 1;
}

} // namespace velmora
