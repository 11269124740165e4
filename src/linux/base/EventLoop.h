// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/FileDescriptor.h"
#include "base/Handle.h"
#include "base/Mutex.h"
#include "base/ThreadChecker.h"
#include "platform/MainLoop.h"

#include <initializer_list>
#include <systemd/sd-event.h>
#include <vector>

namespace velmora {

/// The main loop of the resident programs: sd-event. Timers run on CLOCK_BOOTTIME, so that one that fell due
/// while the machine slept fires when it wakes.
class EventLoop final : public MainLoop {
public:
    /// Throws std::system_error where the kernel gives no descriptors: there is no program without a loop.
    EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    void post(Task task) override;
    [[nodiscard]] Timer after(std::chrono::milliseconds delay, Task task,
                              std::chrono::milliseconds slack = std::chrono::milliseconds{0}) override;
    using MainLoop::after;

    /// Makes `signals` stop the loop instead of the process. To be called before the program starts a thread,
    /// since they are blocked from then on.
    void stopOn(std::initializer_list<int> signals);

    /// Serves the loop until `stop`.
    void run();
    /// Serves what is due, waiting at most `patience` for something; returns whether anything was.
    bool runOnce(std::chrono::milliseconds patience);
    /// Loop's thread only.
    void stop();
    /// It was stopped, and serves nothing any more.
    bool isOver() const;

    /// For adapters that attach sources of their own.
    sd_event* handle() const { return event_.get(); }

private:
    struct OneTimer;
    static int onPosted(sd_event_source* source, int fd, std::uint32_t events, void* self) noexcept;

    Handle<sd_event, sd_event_unref> event_;
    FileDescriptor wakeUp_; ///< eventfd, readable while tasks are posted
    Handle<sd_event_source, sd_event_source_disable_unref> posts_;
    Mutex mutex_;
    std::vector<Task> posted_ VELMORA_GUARDED_BY(mutex_);
    ThreadChecker thread_;
};

} // namespace velmora
