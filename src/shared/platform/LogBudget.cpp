// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/LogBudget.h"

#include <utility>

namespace velmora {

namespace {
constexpr std::chrono::minutes interval{1};
constexpr std::chrono::seconds slack{10};
} // namespace

LogBudget::LogBudget(MainLoop& loop, Log& log, const Clock& clock, std::string category, int atOnce)
    : loop_(loop), log_(log), clock_(clock), category_(std::move(category)), lines_(atOnce, interval)
{
}

void LogBudget::write(LogLevel level, std::string text)
{
    if (held_) ++omitted_; // this one says what is true now
    held_.reset();
    Line line{level, std::move(text)};
    if (lines_.spend(clock_.sinceBoot())) return say(line);
    hold(std::move(line));
}

void LogBudget::hold(Line line)
{
    held_ = std::move(line);
    if (room_) return;
    room_ = loop_.after(
        lines_.wait(clock_.sinceBoot()),
        [this] {
            room_.reset();
            if (const auto last = std::exchange(held_, std::nullopt)) write(last->level, last->text);
        },
        slack);
}

void LogBudget::say(const Line& line)
{
    room_.reset();
    const auto omitted = std::exchange(omitted_, 0);
    const std::string count = omitted > 0 ? " (" + std::to_string(omitted) + " like it left out before)" : "";
    log_.write(line.level, category_, line.text + count);
}

} // namespace velmora
