// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "Contender.h"

#include <functional>

namespace velmora {

inline constexpr std::chrono::seconds usualPatience{10};

/// Whether `condition` comes true in time; it is asked every half a millisecond.
bool await(const std::function<bool()>& condition, Nanoseconds patience = usualPatience);

} // namespace velmora
