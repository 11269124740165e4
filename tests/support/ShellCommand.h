// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>
#include <cstdio>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

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

/// The same on a terminal, on which a person types the next of `lines`, its end included, at each question.
inline Outcome typed(const std::string& command, const std::vector<std::string>& lines)
{
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    Outcome outcome{-1, ""};
    std::array<char, 4096> part{};
    auto line = lines.begin();
    for (ssize_t size = 0; (size = read(terminal, part.data(), part.size())) > 0;) {
        outcome.said.append(part.data(), static_cast<std::size_t>(size));
        if (line != lines.end() && outcome.said.ends_with(": ") &&
            write(terminal, line->data(), line->size()) > 0)
            ++line;
    }
    close(terminal);
    int status = 0;
    waitpid(child, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

} // namespace velmora
