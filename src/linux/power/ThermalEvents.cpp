// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/ThermalEvents.h"

#include "power/ThermalFamily.h"

#include <array>
#include <cerrno>
#include <linux/filter.h>
#include <linux/genetlink.h>
#include <linux/thermal.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <utility>

namespace velmora {

namespace {

/// Lets through what is about zones and their trips: the commands up to the last of these.
bool sortOut(int socket)
{
    static_assert(THERMAL_GENL_EVENT_TZ_TRIP_DELETE < THERMAL_GENL_EVENT_CDEV_ADD);
    constexpr std::uint32_t command = NLMSG_HDRLEN; // the first byte of a generic message
    std::array<sock_filter, 4> program{
        sock_filter BPF_STMT(BPF_LD | BPF_B | BPF_ABS, command),
        sock_filter BPF_JUMP(BPF_JMP | BPF_JGT | BPF_K, THERMAL_GENL_EVENT_TZ_TRIP_DELETE, 1, 0),
        sock_filter BPF_STMT(BPF_RET | BPF_K, 0xffffffff),
        sock_filter BPF_STMT(BPF_RET | BPF_K, 0),
    };
    const sock_fprog filter{.len = program.size(), .filter = program.data()};
    return ::setsockopt(socket, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter) == 0;
}

/// A socket on which nothing comes but those events; none where the kernel has no such group.
FileDescriptor eventSocket()
{
    FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_GENERIC));
    if (!socket) return socket;
    const auto request = thermal_family::question();
    std::array<char, 4096> answer{};
    // The kernel answers such a question before the call that asks it returns.
    if (::send(socket.get(), request.data(), request.size(), 0) < 0) return FileDescriptor();
    const auto size = ::recv(socket.get(), answer.data(), answer.size(), 0);
    const auto group =
        size > 0 ? thermal_family::eventGroup({answer.data(), static_cast<std::size_t>(size)}) : std::nullopt;
    const bool hasJoined =
        group && sortOut(socket.get()) &&
        ::setsockopt(socket.get(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &*group, sizeof *group) == 0;
    return hasJoined ? std::move(socket) : FileDescriptor();
}

} // namespace

Subscription ThermalEvents::observe(std::function<void()> happened)
{
    if (isKernels_ && !std::exchange(isListening_, true)) {
        listenToNetlink();
        listenToDevices();
    }
    return happened_.observe(std::move(happened));
}

void ThermalEvents::listenToNetlink()
{
    socket_ = eventSocket();
    if (socket_) sd_event_add_io(loop_.handle(), out(messages_), socket_.get(), EPOLLIN, onMessage, this);
}

void ThermalEvents::listenToDevices()
{
    if (sd_device_monitor_new(out(devices_)) < 0) return;
    auto* const monitor = devices_.get();
    if (sd_device_monitor_filter_add_match_subsystem_devtype(monitor, "thermal", nullptr) < 0) return;
    if (sd_device_monitor_attach_event(monitor, loop_.handle()) < 0) return;
    sd_device_monitor_start(monitor, onDevice, this);
}

/// What is in a message does not matter, nor how many came or were lost.
int ThermalEvents::onMessage(sd_event_source*, int file, std::uint32_t, void* self) noexcept
{
    std::array<char, 4096> ignored{};
    while (::recv(file, ignored.data(), ignored.size(), MSG_DONTWAIT) >= 0 || errno == ENOBUFS) {
    }
    static_cast<ThermalEvents*>(self)->notice();
    return 0;
}

int ThermalEvents::onDevice(sd_device_monitor*, sd_device*, void* self) noexcept
{
    static_cast<ThermalEvents*>(self)->notice();
    return 0;
}

void ThermalEvents::notice()
{
    if (pausing_)
        isOwed_ = true;
    else
        tell();
}

void ThermalEvents::tell()
{
    isOwed_ = false;
    pausing_ = loop_.after(pause_, [this] {
        const auto spent = std::exchange(pausing_, nullptr);
        if (isOwed_) tell();
    });
    happened_.emit();
}

} // namespace velmora
