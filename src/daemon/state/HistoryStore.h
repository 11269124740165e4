// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/StateFile.h"
#include "wire/VelmoraProtocol.h"

#include <atomic>
#include <string>
#include <vector>

namespace velmora {

/// The daemon's history: history.json in the state directory, in the form and with the thinning that the
/// user's own history file has. Loading and recording belong to the main thread, `save` to a worker.
class HistoryStore {
public:
    HistoryStore(std::filesystem::path path, const Clock& clock, Log& log)
        : file_(std::move(path), clock, log), log_(log)
    {
    }

    /// Before anything else. A file that cannot be understood is set aside.
    void load();

    /// Keeps `candidate` if it tells something new; returns whether it did. The oldest goes where there are
    /// more than a thousand. A last sample far in the future is one that a wrong clock has dated.
    bool record(const HSHistorySnapshot& candidate);

    const std::vector<HSHistorySnapshot>& samples() const { return samples_; }

    /// The file's contents for `samples()`.
    std::string encoded() const;
    bool save(const std::string& encoded)
    {
        hasFailed_ = !file_.write(encoded);
        return !hasFailed_;
    }
    /// Whether the last save failed. Any thread.
    bool hasFailed() const { return hasFailed_; }

private:
    StateFile file_;
    Log& log_;
    std::vector<HSHistorySnapshot> samples_; // oldest first
    std::atomic<bool> hasFailed_ = false;
};

} // namespace velmora
