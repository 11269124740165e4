// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/Clients.h"

namespace velmora {

/// Serves a call that pauses or resumes charging, whichever interface it came by: it is answered with whether
/// charging is allowed afterwards, or with AccessDenied.
int controlCharging(Clients& clients, DaemonService& service, sd_bus_message* call, ChargingCommand command);

} // namespace velmora
