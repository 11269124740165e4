// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "power/DeviceAttributes.h"
#include "power/PowerSupplyReader.h"

namespace velmora {

/// Reads one battery by the rules of `PowerSupplyReader`; the name is the caller's to fill in.
BatteryReading readBattery(DeviceAttributes& battery);

/// What its driver lets the charger be told, as it stands now.
ChargeAttributes readChargeAttributes(DeviceAttributes& battery);

} // namespace velmora
