// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "base/Mutex.h"
#include "base/Observable.h"
#include "base/ThreadChecker.h"
#include "platform/Clock.h"
#include "platform/MainLoop.h"
#include "platform/WorkQueue.h"
#include "wire/VelmoraProtocol.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// The battery history of this machine: samples thinned at intake, capped in number, kept in one JSON file
/// (see HistoryCodec.h).
///
/// The file is best effort. One that cannot be read counts as an empty history and is overwritten by the next
/// save; one that cannot be written is given up. Neither is logged. A save follows each kept sample at once
/// and as a rule does not hold it yet: the newest sample reaches the file with the next one. Nothing is saved
/// before the loaded list stands in `history`: an empty one would overwrite it.
class AnalyticsStore {
    Lifetime lifetime_;

public:
    using History = std::vector<HSHistorySnapshot>;

    /// The store of this process, in its default place. Main thread only.
    static AnalyticsStore& shared();

    /// Queues the loading of `file`; where none is given, of "Velmora/history.json" in the user's first
    /// application support folder (made if need be), or of "velmora_history.json" in the temporary folder
    /// where there is none. Without either the history lasts as long as the program.
    explicit AnalyticsStore(std::optional<std::filesystem::path> file = std::nullopt);

    AnalyticsStore(const AnalyticsStore&) = delete;
    AnalyticsStore& operator=(const AnalyticsStore&) = delete;

    /// Oldest first. Main thread only.
    Observable<History> history{{}, nullptr, [this] { publish(); }};

    /// Offers a sample of now; what `isWorthKeeping` is appended to `history`. Any thread; returns at once.
    void record(double percentage, std::string thermalState, bool isCharging, double health);

    /// The history as it stands. Any thread.
    History getHistory() const { return *published(); }

private:
    void publish();
    std::shared_ptr<const History> published() const;

    // These three run on the queue.
    void loadFromDisk();
    void intake(const HSHistorySnapshot& candidate);
    void saveToDisk() const;

    void append(const HSHistorySnapshot& sample);

    ThreadChecker mainThread_;
    std::filesystem::path fileURL_;
    std::shared_ptr<MainLoop> mainLoop_;
    std::shared_ptr<Clock> clock_;

    // `history` belongs to the main thread, yet the queue filters and saves what stands there. Each
    // assignment therefore leaves an immutable copy here, and the queue reads the latest one.
    mutable Mutex mutex_;
    std::shared_ptr<const History> published_ VELMORA_GUARDED_BY(mutex_) = std::make_shared<const History>();
    std::atomic<bool> isLoaded_ = false; ///< `history` holds what the file held

    std::unique_ptr<WorkQueue> queue_; // last, so that its work ends while all that it uses is there
};

} // namespace velmora
