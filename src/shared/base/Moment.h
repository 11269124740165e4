// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <string>

namespace velmora {

/// "2026-11-22 02:10", in local time; empty for a date that no calendar has.
std::string localTime(Date date);
/// "2026-11-22T02:10:00Z"; empty likewise.
std::string utcTime(Date date);

} // namespace velmora
