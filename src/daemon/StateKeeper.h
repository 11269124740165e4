// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "platform/MainLoop.h"
#include "platform/WorkQueue.h"
#include "state/SettingsStore.h"

#include <functional>

namespace velmora {

/// Has what the daemon remembers saved, where it differs from what was saved last. Main thread only; the disk
/// is a worker's business.
class StateKeeper {
public:
    struct Ports {
        MainLoop& loop;
        WorkQueue& files; ///< the worker that alone writes through the store
        SettingsStore& store;
        std::function<DaemonState()> remembered; ///< as it is now
    };

    /// Loads what the last run left.
    explicit StateKeeper(Ports ports) : ports_(std::move(ports)), saved_(ports_.store.load()) {}

    /// What was handed to the disk last.
    const DaemonState& saved() const { return saved_; }
    /// Whether the disk refused it.
    bool hasFailed() const { return ports_.store.hasFailed(); }

    void save();
    /// In a moment: anybody may change their own settings at any pace, and the disk need not follow each
    /// change.
    void saveSoon();
    /// Once a worker has done so, `done` is told whether it is on the disk.
    void saveNow(const std::function<void(bool isSaved)>& done);

private:
    Lifetime lifetime_;
    Ports ports_;
    DaemonState saved_;
    MainLoop::Timer saving_;
};

} // namespace velmora
