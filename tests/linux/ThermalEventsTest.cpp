// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LoopTest.h"
#include "RecordingLog.h"
#include "power/LinuxThermalLevel.h"
#include "power/ThermalFamily.h"

#include <array>
#include <linux/genetlink.h>
#include <linux/thermal.h>
#include <sys/socket.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;

/// What this kernel says of the family; empty where it has none.
std::string answerOfTheKernel()
{
    const FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_GENERIC));
    const auto question = thermal_family::question();
    std::array<char, 4096> answer{};
    if (::send(socket.get(), question.data(), question.size(), 0) < 0) return "";
    const auto size = ::recv(socket.get(), answer.data(), answer.size(), MSG_DONTWAIT);
    return {answer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

/// Sends `command` to the group as the kernel does, for which root has the right.
bool send(std::uint32_t group, std::uint8_t command)
{
    struct {
        nlmsghdr head{};
        genlmsghdr generic{};
    } message;
    message.head.nlmsg_len = NLMSG_HDRLEN + GENL_HDRLEN;
    message.generic.cmd = command;
    sockaddr_nl to{};
    to.nl_family = AF_NETLINK;
    to.nl_groups = 1U << (group - 1);
    const FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_GENERIC));
    return ::sendto(socket.get(), &message, message.head.nlmsg_len, 0, reinterpret_cast<sockaddr*>(&to),
                    sizeof to) > 0;
}

struct ThermalEventsTest : LoopTest {};

TEST_F(ThermalEventsTest, TellsWhatTheKernelSaysOfZonesAndNothingElse)
{
    const auto group = thermal_family::eventGroup(answerOfTheKernel());
    if (!group || *group > 32) GTEST_SKIP() << "this kernel announces nothing";
    ThermalEvents events(loop, Sysfs("/sys"), 100ms);
    int told = 0;
    const auto observing = events.observe([&] { ++told; });
    if (!send(*group, THERMAL_GENL_EVENT_CDEV_STATE_UPDATE)) GTEST_SKIP() << "only root may send this";
    for (int i = 0; i < 20; ++i) serve();
    EXPECT_EQ(told, 0) << "a fan";
    for (int i = 0; i < 100; ++i) send(*group, THERMAL_GENL_EVENT_TZ_TRIP_UP);
    EXPECT_TRUE(eventually([&] { return told == 1; }));
    EXPECT_TRUE(eventually([&] { return told == 2 || !loop.runOnce(150ms); }));
    EXPECT_LE(told, 2) << "a flood costs one look at a time";
}

} // namespace
} // namespace velmora
