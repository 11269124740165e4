// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/LogBudget.h"

#include <algorithm>

namespace velmora {

namespace {
constexpr std::chrono::minutes refillTime{1};
constexpr std::chrono::seconds slack{10};
} // namespace

LogBudget::LogBudget(MainLoop& loop, Log& log, const Clock& clock, std::string category, int atOnce)
    : loop_(loop),
      log_(log),
      clock_(clock),
      category_(std::move(category)),
      atOnce_(atOnce),
      refilled_(clock.sinceBoot()),
      left_(atOnce)
{
}

void LogBudget::write(LogLevel level, std::string text)
{
    refill();
    if (held_) ++omitted_; // this one says what is true now
    held_.reset();
    Line line{level, std::move(text)};
    if (left_ > 0) return spendOn(line);
    hold(std::move(line));
}

void LogBudget::refill()
{
    const auto minutes = (clock_.sinceBoot() - refilled_) / refillTime;
    left_ = static_cast<int>(std::min<std::int64_t>(atOnce_, left_ + minutes));
    refilled_ += minutes * refillTime;
}

void LogBudget::hold(Line line)
{
    held_ = std::move(line);
    if (room_) return;
    const auto wait = refilled_ + refillTime - clock_.sinceBoot();
    room_ = loop_.after(
        wait,
        [this] {
            room_.reset();
            refill();
            if (const auto last = std::exchange(held_, std::nullopt)) spendOn(*last);
        },
        slack);
}

void LogBudget::spendOn(const Line& line)
{
    room_.reset();
    --left_;
    const auto omitted = std::exchange(omitted_, 0);
    const std::string count = omitted > 0 ? " (" + std::to_string(omitted) + " like it left out before)" : "";
    log_.write(line.level, category_, line.text + count);
}

} // namespace velmora
