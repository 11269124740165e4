// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "bus/DBus.h"
#include "bus/NameOwner.h"
#include "platform/Clock.h"
#include "platform/Complaints.h"
#include "platform/Log.h"
#include "windows/WindowsProcess.h"

#include <chrono>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace velmora {

/// velmora-ui as seen from the resident program: started when a window is asked for, told of further ones
/// while it runs, and never waited for. It ends with this. One that does not answer is ended and started anew
/// at the next request. Main thread only.
class WindowsProgram {
public:
    /// `bus` is null where there is no session bus: then there are no windows, and each request is a line in
    /// the log. The others must outlive this.
    WindowsProgram(EventLoop& loop, sd_bus* bus, const Clock& clock, Log& log, std::filesystem::path program);
    ~WindowsProgram();
    WindowsProgram(const WindowsProgram&) = delete;
    WindowsProgram& operator=(const WindowsProgram&) = delete;

    void request(WindowRequest request);

private:
    /// The process that this started, while it lives.
    struct Run {
        std::string window; ///< that it was started for
        std::chrono::milliseconds started;
        std::unique_ptr<WindowsProcess> process;
        bool hasAppeared = false; ///< it owned the windows' name at some time
    };

    void start(const WindowRequest& request);
    void tell(const WindowRequest& request);
    void wait(WindowRequest request);
    int answered(sd_bus_message* reply);
    void startAnew();
    void serveNext();
    std::optional<WindowRequest> takeNext();
    bool isOnItsWay(const std::string& window) const;
    void refused(const WindowRequest& request, const sd_bus_error& error);
    void appeared();
    void ended(const WindowsProcess::End& end);
    bool isStuck() const;

    EventLoop& loop_;
    sd_bus* bus_;
    const Clock& clock_;
    Log& log_;
    Complaints complaints_; ///< of what each click would meet again
    std::filesystem::path program_;
    std::optional<NameOwner> owner_; ///< of the windows' name
    std::optional<Run> run_;
    std::optional<WindowRequest> told_; ///< not answered yet
    std::deque<WindowRequest> waiting_; ///< one a window, until a program can be told
    dbus::Slot call_;
};

} // namespace velmora
