// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/Asker.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace velmora::ctl {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto forever = UINT64_MAX;

int keepAnswer(sd_bus_message* reply, void* kept, sd_bus_error*)
{
    static_cast<dbus::Message*>(kept)->reset(sd_bus_message_ref(reply));
    return 1;
}

} // namespace

Asker::Asker(EventLoop& loop, dbus::Bus bus, std::optional<std::chrono::seconds> patience, Failure unanswered)
    : loop_(loop), patience_(patience), unanswered_(std::move(unanswered)), bus_(std::move(bus))
{
}

std::vector<dbus::Message> Asker::ask(const Calls& calls, std::chrono::seconds patience)
{
    const auto limit = patience_.value_or(patience);
    const auto deadline = Clock::now() + limit + 1s; // the bus itself may hang
    std::vector<dbus::Message> replies(calls.size());
    std::vector<dbus::Slot> pending;
    for (std::size_t i = 0; i < calls.size(); ++i)
        pending.push_back(dbus::ask(bus_.get(), calls[i], keepAnswer, &replies[i],
                                    static_cast<std::uint64_t>(std::chrono::microseconds(limit).count())));
    const auto areAnswered = [&] {
        return std::ranges::none_of(replies, [](const auto& reply) { return !reply; });
    };
    if (!serveUntil(deadline, areAnswered)) throw unanswered_;
    return replies;
}

dbus::Message Asker::ask(dbus::Message call, std::chrono::seconds patience)
{
    Calls calls;
    calls.push_back(std::move(call));
    return std::move(ask(calls, patience).front());
}

dbus::Message Asker::askForever(const dbus::Message& call, const std::function<void()>& meanwhile)
{
    dbus::Message reply;
    const auto pending = dbus::ask(bus_.get(), call, keepAnswer, &reply, forever);
    while (!serveUntil(Clock::now() + readPatience, [&] { return reply != nullptr; })) meanwhile();
    return reply;
}

bool Asker::serveUntil(Clock::time_point deadline, const std::function<bool()>& isDone)
{
    while (!isDone()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left <= 0ms) return false;
        loop_.runOnce(left);
    }
    return true;
}

} // namespace velmora::ctl
