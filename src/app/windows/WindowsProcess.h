// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "base/Handle.h"
#include "base/Spawn.h"
#include "windows/WindowRequest.h"

#include <filesystem>
#include <functional>
#include <string>

namespace velmora {

/// One run of velmora-ui, from its start until its end has been seen. Whoever drops it before kills it first,
/// or leaves it to itself. Main thread only.
class WindowsProcess {
public:
    struct End {
        std::string fate; ///< "ended with status 1", for the log
        bool isClean = false;
    };
    using Ended = std::function<void(const End& end)>;

    /// Starts the program for this window. `ended` may destroy this. Throws std::system_error where there is
    /// no such program, or the system refuses. The loop must outlive this.
    WindowsProcess(EventLoop& loop, const std::filesystem::path& program, const WindowRequest& request,
                   Ended ended);
    WindowsProcess(const WindowsProcess&) = delete;
    WindowsProcess& operator=(const WindowsProcess&) = delete;

    /// SIGKILL; `ended` tells when it is gone.
    void kill() const;

private:
    static int onEnd(sd_event_source*, int, std::uint32_t, void* self) noexcept;

    Ended ended_;
    Child child_;
    Handle<sd_event_source, sd_event_source_disable_unref> source_;
};

} // namespace velmora
