// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Clock.h"
#include "platform/Log.h"

#include <chrono>
#include <string>
#include <utility>

namespace velmora {

/// Log lines that a client can cause: a few at once, then one a minute, with a count of what was left out.
class LogBudget {
public:
    static constexpr int fewAtOnce = 5;
    static constexpr int manyAtOnce = 30; ///< a person who plays with a slider

    LogBudget(Log& log, const Clock& clock, std::string category, int atOnce = fewAtOnce);

    void warning(std::string text) { write(LogLevel::warning, std::move(text)); }
    void info(std::string text) { write(LogLevel::info, std::move(text)); }

private:
    void write(LogLevel level, std::string text);

    Log& log_;
    const Clock& clock_;
    std::string category_;
    int atOnce_;
    std::chrono::milliseconds refilled_;
    int left_;
    unsigned long omitted_ = 0;
};

} // namespace velmora
