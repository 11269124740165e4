// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LimitAdoption.h"

#include <string>
#include <utility>

namespace velmora {

namespace {

/// How often a charger is asked what it holds before it is told what to hold. Some never tell before that.
constexpr int maximumAttempts = 3;

} // namespace

void LimitAdoption::observe()
{
    const bool isAdopted = adopt();
    if (firstHeld_.observe(ports_.keeper.chargers(), isDone_) || isAdopted) note();
}

void LimitAdoption::settle()
{
    const bool isNews = !std::exchange(isDone_, true);
    if (firstHeld_.observe(ports_.keeper.chargers(), isDone_) || isNews) note();
}

void LimitAdoption::note()
{
    ++notes_;
    ports_.save(lifetime_.guard([this] {
        if (--notes_ == 0) ports_.settled();
    }));
}

/// Whether it is done with this look.
bool LimitAdoption::adopt()
{
    const auto held = ports_.keeper.inForce();
    const auto control = ports_.keeper.control();
    if (isDone_ || control == ChargeControl::none) return false;
    if (!held && ++attempts_ < maximumAttempts) {
        ports_.lookAgain();
        return false;
    }
    isDone_ = true;
    // Somebody limited this charger before this daemon came: that is the owner's wish. A value below what can
    // be asked for is a controller's nonsense after a reset, and a fixed limit is nobody's wish for a number.
    const bool isWish = held && held->end >= 20 && held->end < 100;
    if (isWish && control != ChargeControl::fixedLimit) {
        ports_.adopt(held->end);
        ports_.log.info("Daemon", "The charger already stops at " + std::to_string(held->end) +
                                      "%: that becomes the limit.");
    }
    return true;
}

} // namespace velmora
