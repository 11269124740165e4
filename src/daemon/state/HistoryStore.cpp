// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "state/HistoryStore.h"

#include "history/HistoryCodec.h"

namespace velmora {

void HistoryStore::load()
{
    const auto bytes = file_.read();
    if (!bytes) return;
    auto samples = decodeHistory(*bytes);
    if (!samples) {
        file_.setAside("it is not a history");
        return;
    }
    samples_ = std::move(*samples);
    if (samples_.size() > history_limits::maximumLength) {
        log_.info("HistoryStore", "The history holds " + std::to_string(samples_.size()) +
                                      " samples; the newest " +
                                      std::to_string(history_limits::maximumLength) + " are kept.");
        samples_.erase(samples_.begin(),
                       samples_.end() - static_cast<std::ptrdiff_t>(history_limits::maximumLength));
    }
}

bool HistoryStore::record(const HSHistorySnapshot& candidate)
{
    const auto* last = samples_.empty() ? nullptr : &samples_.back();
    if (last && last->timestamp - candidate.timestamp >= history_limits::minimumSpacing) last = nullptr;
    if (!isWorthKeeping(last, candidate)) return false;
    samples_.push_back(candidate);
    if (samples_.size() > history_limits::maximumLength) samples_.erase(samples_.begin());
    return true;
}

std::string HistoryStore::encoded() const
{
    return encodeHistory(samples_);
}

} // namespace velmora
