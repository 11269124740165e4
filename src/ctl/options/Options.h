// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "options/AccountWords.h"
#include "options/FleetWords.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace velmora::ctl {

/// What a command line asks for.
struct Request {
    enum class Command : std::uint8_t {
        status,
        limit,
        autoProtect,
        storage,
        full,
        pause,
        resume,
        history,
        watch,
        diagnose,
        fleet,
        account,
        help,
        version,
    };
    static constexpr std::chrono::seconds longestPatience{600};

    Command command = Command::status;
    bool isOn = true;                    ///< of a switch; false for `full --cancel`
    double limit = 0;                    ///< percent
    std::optional<double> resumeBelow{}; ///< percent
    bool isJson = false;
    bool isCsv = false;
    std::optional<std::chrono::seconds> patience{}; ///< for an answer
    FleetRequest fleet{};
    AccountRequest account{};
};

/// The request of the words after the program's name, or what is wrong with them as a sentence.
std::variant<Request, std::string> parse(std::span<const char* const> words);

/// What `--help` prints.
std::string usage();

} // namespace velmora::ctl
