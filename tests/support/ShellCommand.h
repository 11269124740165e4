// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace velmora {

/// What became of a command.
struct Outcome {
    int status;       ///< -1 where a signal ended it
    std::string said; ///< on both outputs
};

/// Runs it as a shell does, and waits for its end.
inline Outcome shell(const std::string& command)
{
    Outcome outcome{-1, ""};
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    std::array<char, 4096> part{};
    while (const auto size = std::fread(part.data(), 1, part.size(), pipe))
        outcome.said.append(part.data(), size);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

} // namespace velmora
