// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"
#include "base/Observable.h"

#include <optional>
#include <string_view>

namespace velmora {

/// When a notice of each kind was last delivered, remembered over restarts. A kind is what a person can
/// switch on and off. Main thread only.
class DeliveredNotices {
public:
    using Moment = Observable<std::optional<Date>>; ///< nothing: never

    /// That of this process, which the senders of notices tell.
    static DeliveredNotices& shared();

    /// Reads what is remembered.
    DeliveredNotices();

    /// A notice with this identifier was delivered now; see the senders. Others are passed over.
    void note(std::string_view identifier);

    Moment lastLimitNotice{std::nullopt};
    Moment lastPowerNotice{std::nullopt};
    Moment lastHeatNotice{std::nullopt};
    Moment lastCycleNotice{std::nullopt};
    Moment lastLowBatteryNotice{std::nullopt};
    Moment lastTravelNotice{std::nullopt};
};

} // namespace velmora
