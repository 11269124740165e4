// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "StateKeeper.h"

#include <utility>

namespace velmora {

using namespace std::chrono_literals;

namespace {

/// For how long a change of a user's own settings is in memory alone.
constexpr auto saveDelay = 2s;

} // namespace

void StateKeeper::save()
{
    DaemonState now = ports_.remembered();
    if (now == saved_ && !hasFailed()) return;
    saved_ = std::move(now);
    if (ports_.store.put(saved_)) {
        ports_.files.async([&store = ports_.store] { store.saveNewest(); });
    }
}

void StateKeeper::saveSoon()
{
    if (saving_) return;
    saving_ = ports_.loop.after(saveDelay, lifetime_.guard([this] {
        const auto spent = std::exchange(saving_, nullptr);
        save();
    }));
}

void StateKeeper::saveNow(const std::function<void(bool)>& done)
{
    saved_ = ports_.remembered();
    ports_.store.put(saved_);
    ports_.files.async([&store = ports_.store, &loop = ports_.loop, done] {
        store.saveNewest();
        loop.post([done, isSaved = !store.hasFailed()] { done(isSaved); });
    });
}

} // namespace velmora
