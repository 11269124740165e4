// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>

namespace velmora {

/// A program that a test runs: with this test's environment and some variables more, and with what it has to
/// say in a file. Killed with the object.
class Process {
public:
    using Environment = std::map<std::string, std::string>;

    /// Standard error is added to `errors`. Throws std::system_error where the program cannot be started.
    Process(const std::filesystem::path& program, const Environment& additions,
            const std::filesystem::path& errors);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// Nothing for one that has ended.
    void signal(int number) const;

    /// Waits for its end: the exit status, or 128 and more for a signal, as a shell tells it.
    int wait();

    /// Asks it to end, as systemd does, and waits.
    int terminate();

private:
    pid_t id_ = -1;
    std::optional<int> status_;
};

} // namespace velmora
