// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "HeatGuard.h"

#include <utility>

namespace velmora {

namespace {

/// Longer than logind lets anybody delay a sleep.
constexpr std::chrono::minutes longestDelay{1};

} // namespace

HeatGuard::HeatGuard(Ports ports, bool isNoted, std::chrono::seconds patience)
    : ports_(std::move(ports)), complaints_(ports_.log, "HeatGuard"), rules_(patience), isNoted_(isNoted)
{
}

void HeatGuard::observe(const HeatPause::Facts& facts, std::chrono::milliseconds sinceBoot)
{
    rules_.observe(facts, sinceBoot);
    if (asleepSince_ && sinceBoot - *asleepSince_ > longestDelay) wake();
    if (!rules_.pausedAt() || asleepSince_ || isOnDisk_) return;
    isNoted_ = true;
    ports_.save(lifetime_.guard([this](bool isSaved) { noted(isSaved); }));
}

void HeatGuard::noted(bool isSaved)
{
    if (!isNoted_ || isOnDisk_) return; // lifted meanwhile, or known already
    if (!isSaved) {
        isNoted_ = false;
        complaints_.raise("note", "Charging is not paused although the battery is hot: a note of it "
                                  "cannot be saved, and nobody would end the pause after a crash.");
        return;
    }
    complaints_.settle("note");
    isOnDisk_ = isNew_ = true;
    ports_.delaySleep(true);
    ports_.changed();
}

std::optional<int> HeatGuard::pausedAt() const
{
    return isOnDisk_ && !asleepSince_ ? rules_.pausedAt() : std::nullopt;
}

bool HeatGuard::isFirstAttempt()
{
    return std::exchange(isNew_, false);
}

void HeatGuard::lifted(bool isRestored)
{
    const auto sleep = std::exchange(sleep_, nullptr);
    if (isNoted_ && isRestored && !pausedAt()) {
        const bool isWaiting = !isOnDisk_ && !asleepSince_ && rules_.pausedAt(); // for the note
        if (!isWaiting) isNoted_ = isOnDisk_ = false;
    }
    if (!isOnDisk_) ports_.delaySleep(false);
    if (sleep) sleep();
}

void HeatGuard::goToSleep(std::chrono::milliseconds sinceBoot, std::function<void()> done)
{
    asleepSince_ = sinceBoot;
    if (!isNoted_) return done();
    sleep_ = std::move(done);
    ports_.changed();
}

} // namespace velmora
