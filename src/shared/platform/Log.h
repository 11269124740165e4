// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

enum class LogLevel : std::uint8_t { debug, info, warning, error };

/// The platform's log, subsystem "app.velmora". One line a call; `category` is the name of the class that
/// logs.
class Log {
public:
    virtual ~Log() = default;

    /// May be called from any thread. `text` may hold anything: what came from outside is escaped as needed.
    virtual void write(LogLevel level, std::string_view category, std::string_view text) = 0;

    void debug(std::string_view category, std::string_view text) { write(LogLevel::debug, category, text); }
    void info(std::string_view category, std::string_view text) { write(LogLevel::info, category, text); }
    void warning(std::string_view category, std::string_view text)
    {
        write(LogLevel::warning, category, text);
    }
    void error(std::string_view category, std::string_view text) { write(LogLevel::error, category, text); }
};

} // namespace velmora
