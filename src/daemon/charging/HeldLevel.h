// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargePolicy.h"
#include "wire/FixedLimit.h"

#include <chrono>
#include <string>
#include <string_view>

namespace velmora {

/// Which of two levels a firmware holds while its own limit is on, learnt from what the battery does: one
/// that charges on far above 60 % is held at 80 %, and one that takes nothing between 55 and 60 % is held
/// there. Either has to last two minutes: firmware takes a while to follow. What was wrong is put right by
/// the next sign of the other.
class HeldLevel {
public:
    using Time = std::chrono::milliseconds; ///< since boot

    /// `known`: a text of `FixedLimit`; one that is none of the two is nothing.
    explicit HeldLevel(std::string_view known = "");

    /// `isOn`: the firmware's own limit is on. Returns whether this taught something new.
    bool observe(bool isOn, const ChargeReading& reading, Time now);

    /// Null while it is not known.
    const FixedLimit* limit() const { return limit_; }
    std::string text() const { return limit_ ? std::string(limit_->text) : ""; }

private:
    const FixedLimit* limit_ = nullptr;
    const FixedLimit* sign_ = nullptr; ///< what the battery speaks for
    Time since_{};
};

} // namespace velmora
