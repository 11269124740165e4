// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LogBudget.h"

#include <algorithm>

namespace velmora {

namespace {
constexpr std::chrono::minutes refill{1};
} // namespace

LogBudget::LogBudget(Log& log, const Clock& clock, std::string category, int atOnce)
    : log_(log),
      clock_(clock),
      category_(std::move(category)),
      atOnce_(atOnce),
      refilled_(clock.sinceBoot()),
      left_(atOnce)
{
}

void LogBudget::write(LogLevel level, std::string text)
{
    const auto minutes = (clock_.sinceBoot() - refilled_) / refill;
    left_ = static_cast<int>(std::min<std::int64_t>(atOnce_, left_ + minutes));
    refilled_ += minutes * refill;
    if (left_ <= 0) {
        ++omitted_;
        return;
    }
    --left_;
    if (omitted_ > 0) text += " (" + std::to_string(omitted_) + " like it left out before)";
    omitted_ = 0;
    log_.write(level, category_, text);
}

} // namespace velmora
