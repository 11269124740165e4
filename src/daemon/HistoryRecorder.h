// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Clock.h"
#include "platform/WorkQueue.h"
#include "power/MachineBattery.h"
#include "state/HistoryStore.h"

#include <utility>
#include <vector>

namespace velmora {

/// Records the battery's past. It is read at first use, which is after the first answer to a client: a
/// thousand samples take a while. Main thread only; the disk is a worker's business.
class HistoryRecorder {
public:
    struct Ports {
        const Clock& clock;
        WorkQueue& files; ///< the worker that alone writes through the store
        HistoryStore& store;
    };

    explicit HistoryRecorder(const Ports& ports) : ports_(ports) {}

    const std::vector<HSHistorySnapshot>& samples() { return store().samples(); }

    /// Keeps what tells something new. `thermalLevel`: as of ThermalLevel::level.
    void record(const MachineBattery& battery, int thermalLevel);

    /// Whether the disk refused the last of it.
    bool hasFailed() const { return ports_.store.hasFailed(); }
    void save();

private:
    HistoryStore& store()
    {
        if (!std::exchange(isLoaded_, true)) ports_.store.load();
        return ports_.store;
    }

    Ports ports_;
    bool isLoaded_ = false;
};

} // namespace velmora
