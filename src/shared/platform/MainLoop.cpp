// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/MainLoop.h"

namespace velmora {

namespace {

struct Repeating : std::enable_shared_from_this<Repeating> {
    MainLoop& loop;
    std::chrono::milliseconds interval;
    MainLoop::Task task;
    std::chrono::milliseconds slack;
    MainLoop::Timer next;

    Repeating(MainLoop& theLoop, std::chrono::milliseconds theInterval, MainLoop::Task theTask,
              std::chrono::milliseconds theSlack)
        : loop(theLoop), interval(theInterval), task(std::move(theTask)), slack(theSlack)
    {
    }

    void arm()
    {
        next = loop.after(
            interval,
            [weak = weak_from_this()] {
                const auto self = weak.lock();
                if (!self) return;
                self->arm();
                self->task();
            },
            slack);
    }
};

} // namespace

MainLoop::Timer MainLoop::every(std::chrono::milliseconds interval, Task task,
                                std::chrono::milliseconds slack)
{
    const auto repeating = std::make_shared<Repeating>(*this, interval, std::move(task), slack);
    repeating->arm();
    return repeating;
}

} // namespace velmora
