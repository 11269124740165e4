// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/FleetSnapshot.h"
#include "link/VelmoraLink.h"

#include <chrono>
#include <functional>
#include <optional>

namespace velmora::ctl {

/// The answer to a GetAll of the fleet's object, bounded. Throws a Failure for an error and for what is of
/// another type than it should be.
FleetSnapshot readFleet(const dbus::Message& reply);

/// The user's `velmora` as the one that knows the fleet. Nothing starts it. Each call waits for its answer,
/// and throws a Failure where there is none that can be used.
class FleetLink {
public:
    /// Longer than a store takes for a request, connecting included.
    static constexpr std::chrono::seconds storePatience{20};

    /// `patience` is for an answer of any kind in place of these. Throws a Failure where there is no bus.
    FleetLink(EventLoop& loop, std::optional<std::chrono::seconds> patience);

    FleetSnapshot snapshot();
    /// With the machines as the store has them now; with the last ones where it does not answer.
    FleetSnapshot listed();

    void operate(const char* operation) { velmora_.operate(operation); }
    /// `record` may have a password: nothing of it is logged, and it is overwritten once it is sent.
    void operate(const char* operation, KeyedArchive record);
    void setAcceptsCommands(bool areAccepted);

    /// The first look at which that is so, or the last one before patience ends.
    FleetSnapshot awaited(const std::function<bool(const FleetSnapshot& now)>& isSo);
    /// Likewise, with the machines listed anew each time.
    FleetSnapshot awaitedListing(const std::function<bool(const FleetSnapshot& now)>& isSo);

private:
    VelmoraLink velmora_;
};

} // namespace velmora::ctl
