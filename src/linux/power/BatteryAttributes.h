// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "power/DeviceAttributes.h"
#include "power/PowerSupplyReader.h"

namespace velmora {

/// Reads one battery by the rules of `PowerSupplyReader`; name and folder are the caller's to fill in.
BatteryReading readBattery(const DeviceAttributes& battery);

} // namespace velmora
