// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/EventLoop.h"
#include "base/FileDescriptor.h"
#include "base/Handle.h"
#include "base/Observable.h"
#include "power/Sysfs.h"

#include <chrono>
#include <functional>
#include <systemd/sd-device.h>
#include <systemd/sd-event.h>

namespace velmora {

/// Tells when the kernel has seen a thermal zone cross one of its trips, or a zone come or go: by the group
/// "event" of the generic netlink family "thermal" (Linux 5.9 and later, where it is built in), and by the
/// device events of the class. Any user may listen. Many laptops send few or none of either: zones have to be
/// looked at now and then all the same.
///
/// Nothing is told on a tree that is not the kernel's own. What else that group carries, such as the speeds
/// of fans and processors, comes many times a second and is sorted out in the kernel. What follows within
/// `pause` is told once that is over. Loop's thread only.
class ThermalEvents {
public:
    /// `loop` must outlive this. Where the kernel offers nothing to listen to, this stays silent.
    ThermalEvents(EventLoop& loop, const Sysfs& sysfs,
                  std::chrono::milliseconds pause = std::chrono::seconds{2})
        : loop_(loop), isKernels_(sysfs.isKernels()), pause_(pause)
    {
    }
    ThermalEvents(const ThermalEvents&) = delete;
    ThermalEvents& operator=(const ThermalEvents&) = delete;

    /// The first observer makes it listen: a program that asks for no events is not woken by any.
    [[nodiscard]] Subscription observe(std::function<void()> happened);

private:
    using Source = Handle<sd_event_source, sd_event_source_disable_unref>;
    using Device = Handle<sd_device_monitor, sd_device_monitor_unref>;

    void listenToNetlink();
    void listenToDevices();
    static int onMessage(sd_event_source* source, int file, std::uint32_t events, void* self) noexcept;
    static int onDevice(sd_device_monitor* monitor, sd_device* device, void* self) noexcept;
    void notice();
    void tell();

    EventLoop& loop_;
    bool isKernels_;
    std::chrono::milliseconds pause_;
    Signal<> happened_;
    bool isListening_ = false;
    bool isOwed_ = false;     ///< something happened in the pause
    MainLoop::Timer pausing_; ///< until then nothing more is told
    FileDescriptor socket_;
    Source messages_; ///< after the socket that it watches
    Device devices_;
};

} // namespace velmora
