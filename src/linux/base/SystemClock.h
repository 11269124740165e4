// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Clock.h"

namespace velmora {

/// The kernel's clocks: CLOCK_REALTIME and CLOCK_BOOTTIME.
class SystemClock final : public Clock {
public:
    Date now() const override;
    std::chrono::milliseconds sinceBoot() const override;
};

} // namespace velmora
