// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "bus/DBus.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velmora {

/// systemd's manager, as far as it is asked to enable and start one unit, with the user who is asked for
/// leave: org.freedesktop.systemd1 on a bus of one's own. Refuses, fails and orders its signals as the real
/// one does.
class StandInManager {
public:
    enum class Course : std::uint8_t {
        granted,
        refused,   ///< without a prompt, as a rule of polkit's does
        cancelled, ///< at the prompt
        noAgent,   ///< nobody there who could ask
        missing,   ///< unit
        damaged,
        masked,
        withoutInstall, ///< nothing says where it is to be enabled
        failing,        ///< its job
    };
    struct Options {
        Course course = Course::granted;
        bool isEnabled = false;
        /// How long the user thinks at the prompt; nothing: until `decide`.
        std::optional<std::chrono::milliseconds> thinking = std::chrono::milliseconds{0};
    };

    /// Throws std::system_error where another program owns the name. Loop and bus must outlive this.
    StandInManager(EventLoop& loop, sd_bus* bus, Options options);
    StandInManager(const StandInManager&) = delete;
    StandInManager& operator=(const StandInManager&) = delete;

    /// Called when the unit is to be started; calls `finishJob` now or later. Without it the job is done at
    /// once.
    std::function<void()> onStart;
    /// Tells who listens how the job ended: "done", "failed".
    void finishJob(const char* result);

    /// The user answers the prompt that stands, if one does.
    void decide();

    int prompts() const { return prompts_; } ///< so far
    bool isPrompting() const { return waiting_ != nullptr; }

private:
    int subscribe(sd_bus_message* call);
    int getUnitFileState(sd_bus_message* call);
    int authorise(sd_bus_message* call);
    int act(sd_bus_message* call);
    int enable(sd_bus_message* call);
    int start(sd_bus_message* call);
    static const sd_bus_vtable vtable_[];

    EventLoop& loop_;
    sd_bus* bus_;
    Options options_;
    int prompts_ = 0;
    bool isSubscribed_ = false; ///< somebody who wants to hear of jobs
    bool isAuthorised_ = false; ///< for this and all that follows from it
    std::shared_ptr<sd_bus_message> waiting_;
    MainLoop::Timer user_, job_;
    dbus::Slot object_;
};

} // namespace velmora
