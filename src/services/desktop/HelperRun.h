// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Runs programs to their end on the calling thread and hands on what they say on standard output. One that
/// takes too long, says too much or is not wanted any more is killed. One run at a time; `stop` on any
/// thread.
class HelperRun {
public:
    struct Bounds {
        std::chrono::milliseconds patience;
        std::size_t bytes; ///< of what it says
    };
    using Sink = std::function<void(std::string_view bytes)>;

    /// Throws std::system_error where the kernel gives no descriptors.
    HelperRun();

    /// Empty where the program ended with status 0, or was stopped; otherwise what became of it, as "ended
    /// with status 1" for a log line.
    std::string run(const std::vector<std::string>& arguments, Bounds bounds, const Sink& sink);

    /// Ends a run, and each later one before it begins.
    void stop();
    void allow();
    bool isStopped() const;

private:
    FileDescriptor stop_; ///< eventfd, readable while nothing may run
};

} // namespace velmora
