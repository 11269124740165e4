// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Log.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace velmora {

/// Keeps every line for the test to look at. Any thread.
class RecordingLog final : public Log {
public:
    void write(LogLevel, std::string_view, std::string_view text) override
    {
        const std::lock_guard guard(mutex_);
        lines_.emplace_back(text);
    }

    /// How many lines hold `part`; an empty part is in every line.
    std::size_t count(std::string_view part = "") const
    {
        const std::lock_guard guard(mutex_);
        return static_cast<std::size_t>(std::ranges::count_if(
            lines_, [part](const std::string& line) { return line.find(part) != std::string::npos; }));
    }

    void clear()
    {
        const std::lock_guard guard(mutex_);
        lines_.clear();
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace velmora
