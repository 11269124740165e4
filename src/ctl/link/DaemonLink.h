// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "link/Asker.h"
#include "link/Snapshot.h"

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace velmora::ctl {

/// The daemon, for a program that asks, prints and ends: each call waits for its answer, and throws a Failure
/// where there is none that can be used. Nothing starts the daemon: its owner decides whether it runs.
///
/// What comes back is checked for its type and bounded; texts are as the daemon sent them.
class DaemonLink {
public:
    /// How long reading waits. A change waits for as long as somebody takes to enter a password, and asks
    /// every five seconds whether the daemon is still there.
    static constexpr auto readPatience = Asker::readPatience;

    /// `patience` is for an answer of any kind in place of these. Throws a Failure where there is no bus.
    DaemonLink(EventLoop& loop, std::optional<std::chrono::seconds> patience);

    /// Called once where a change has waited for five seconds.
    std::function<void()> onLongWait;

    Snapshot snapshot();
    /// The same without what takes more questions: batteries and others.
    Snapshot glance();
    std::vector<HSHistorySnapshot> history();
    /// What was last done to the charger: records of ChargerAction.
    std::vector<KeyedArchive> actions();

    /// All settings as they are held after the change.
    ChargingSettings change(const KeyedArchive& changes);
    /// PauseCharging or ResumeCharging; whether charging is allowed then.
    bool control(const wire::Message& command);
    /// The charger once it holds what it is asked to, or as it is after two seconds. `before` tells of when
    /// it was asked.
    ChargerReport settled(const ChargerReport& before);

    ChargerReport charger();

    sd_bus* bus() const { return asker_.bus(); }

private:
    using Calls = Asker::Calls;

    dbus::Message call(const char* interface, const char* member, const char* path = wire::objectPath) const;
    Calls glanceCalls() const;
    dbus::Message chargerCall() const;
    dbus::Message askToChange(dbus::Message call);

    Asker asker_;
};

} // namespace velmora::ctl
