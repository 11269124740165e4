// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "base/Handle.h"
#include "base/Observable.h"
#include "platform/Complaints.h"
#include "platform/Log.h"
#include "power/Sysfs.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <systemd/sd-device.h>
#include <systemd/sd-event.h>

namespace velmora {

/// What there is to see now: something that has just happened, or what it has come to by now.
enum class SupplyNews : std::uint8_t { event, secondLook };

/// Tells when a power supply may read differently. It says nothing about what changed: look again at all.
///
/// On the kernel's own tree it listens to the device events of the power_supply class, by way of udev. The
/// kernel sends one when a charger comes or goes and when a supply itself comes or goes; most firmware sends
/// none as the level drifts, so the level has to be read at intervals as well. Should the queue of
/// events overflow, those still in it are told, and each means to look at everything.
///
/// On any other tree a rewrite of `class/power_supply/NAME/uevent` (closed after writing, or renamed into
/// place) is the event, as is the coming and going of a supply. The tree itself may come later, mounted or
/// made.
///
/// The kernel keeps what firmware said for a second, so that a look right after the event may show the state
/// before it: every event is told at once and a second time a little over a second later. Events that come
/// together are told together, and those that follow a signal within `pause` once that is over, so that a
/// flood of them costs four looks a second. Loop's thread only.
class PowerSupplyMonitor {
public:
    /// `loop` and `log` must outlive the monitor. Where the system gives nothing to listen to, that is one
    /// line in the log once somebody observes, and the monitor stays silent; a tree that is not there yet is
    /// waited for.
    PowerSupplyMonitor(EventLoop& loop, const Sysfs& sysfs, Log& log,
                       std::chrono::milliseconds secondLook = std::chrono::milliseconds{1200},
                       std::chrono::milliseconds pause = std::chrono::milliseconds{250});
    ~PowerSupplyMonitor();
    PowerSupplyMonitor(const PowerSupplyMonitor&) = delete;
    PowerSupplyMonitor& operator=(const PowerSupplyMonitor&) = delete;

    /// The first observer makes it listen: a program that asks for no changes is not woken by any.
    [[nodiscard]] Subscription observe(std::function<void(SupplyNews)> changed);

private:
    using Source = Handle<sd_event_source, sd_event_source_disable_unref>;
    using Device = Handle<sd_device_monitor, sd_device_monitor_unref>;

    static int onDevice(sd_device_monitor* monitor, sd_device* device, void* self) noexcept;
    static int onAbove(sd_event_source* source, const struct inotify_event* event, void* self) noexcept;
    static int onFile(sd_event_source* source, const struct inotify_event* event, void* self) noexcept;
    static int onMount(sd_event_source* source, int fd, std::uint32_t events, void* self) noexcept;
    static int onSettled(sd_event_source* source, void* self) noexcept;

    void listen();
    int listenToDevices();
    void listenToMounts();
    void watchTree();
    void awaitRoot();
    Source watchFor(const std::filesystem::path& folder, std::uint32_t events,
                    sd_event_inotify_handler_t handler);
    void watch(const std::filesystem::path& folder);
    void forget(const std::filesystem::path& folder);
    void noticeFile(const std::filesystem::path& folder, const struct inotify_event& event);
    void notice();
    void tell();
    void emit(SupplyNews news);

    EventLoop& loop_;
    Log& log_;
    Complaints complaints_;
    std::filesystem::path root_;
    bool isKernels_;
    std::chrono::milliseconds secondLook_;
    std::chrono::milliseconds pause_;
    Signal<SupplyNews> changes_;
    MainLoop::Timer again_;
    std::chrono::steady_clock::time_point pauseEnd_; ///< until when events wait
    MainLoop::Timer owed_;                           ///< tells of what happened in the pause
    Source settled_; ///< null: listens to nothing yet; runs once all that came together has been seen
    Device devices_;
    Source mounts_;
    Source above_;                                    ///< nearest folder above a root that is not there
    std::filesystem::path awaited_;                   ///< what must appear in that folder
    std::map<std::filesystem::path, Source> watches_; ///< by folder
    std::map<sd_event_source*, std::filesystem::path> folders_;
};

} // namespace velmora
