// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "model/BatteryModel.h"

#include <string>

namespace velmora {

/// What the model shows, in words that a laptop owner understands: "76 %, charging, 12 minutes to
/// the limit of 80 %".
std::string sentence(const BatteryModel& model);

} // namespace velmora
