// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/TokenBucket.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/MainLoop.h"

#include <optional>
#include <string>
#include <utility>

namespace velmora {

/// Log lines that a client can cause: a few at once, then one a minute, with a count of what was left out.
/// The last line is never left out, only late, so that the log ends with the present state. Main thread only.
class LogBudget {
public:
    static constexpr int fewAtOnce = 5;
    static constexpr int manyAtOnce = 30; ///< as many as a user causes with a slider

    LogBudget(MainLoop& loop, Log& log, const Clock& clock, std::string category, int atOnce = fewAtOnce);
    LogBudget(const LogBudget&) = delete;
    LogBudget& operator=(const LogBudget&) = delete;

    void warning(std::string text) { write(LogLevel::warning, std::move(text)); }
    void info(std::string text) { write(LogLevel::info, std::move(text)); }

private:
    struct Line {
        LogLevel level;
        std::string text;
    };

    void write(LogLevel level, std::string text);
    void hold(Line line);
    void say(const Line& line);

    MainLoop& loop_;
    Log& log_;
    const Clock& clock_;
    std::string category_;
    TokenBucket lines_;
    std::optional<Line> held_; ///< the last that there was no room for
    MainLoop::Timer room_;     ///< while one is held: until there is room
    unsigned long omitted_ = 0;
};

} // namespace velmora
