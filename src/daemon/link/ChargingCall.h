// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/Clients.h"

namespace velmora {

/// Serves a call that pauses or resumes charging, whichever interface it came by: it is answered with whether
/// charging is allowed afterwards, or refused.
int controlCharging(Clients& clients, DaemonService& service, sd_bus_message* call, ChargingCommand command);

/// Answers `call` with yes or no, or with a refusal.
DaemonService::ChargingReply chargingReply(sd_bus_message* call);

/// Answers `call` with the error that stands for the refusal: InvalidArgs, AccessDenied, or
/// InteractiveAuthorizationRequired where a password would help.
void answerRefusal(sd_bus_message* call, const Refusal& refusal);

} // namespace velmora
