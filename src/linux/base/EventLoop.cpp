// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/EventLoop.h"

#include <csignal>
#include <ctime>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <system_error>

namespace velmora {

namespace {

void check(int result, const char* what)
{
    if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

constexpr std::uint64_t microseconds(std::chrono::milliseconds time)
{
    return time.count() <= 0 ? 0 : static_cast<std::uint64_t>(time.count()) * 1000;
}

} // namespace

struct EventLoop::OneTimer {
    Handle<sd_event_source, sd_event_source_disable_unref> source;
    Task task;

    static int onDue(sd_event_source*, std::uint64_t, void* self) noexcept
    {
        const Task task = std::move(static_cast<OneTimer*>(self)->task); // the timer may be dropped meanwhile
        task();
        return 0;
    }
};

EventLoop::EventLoop()
{
    check(sd_event_new(out(event_)), "sd_event_new");
    wakeUp_ = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    check(wakeUp_ ? 0 : -errno, "eventfd");
    check(sd_event_add_io(event_.get(), out(posts_), wakeUp_.get(), EPOLLIN, onPosted, this),
          "sd_event_add_io");
}

void EventLoop::post(Task task)
{
    bool isFirst = false;
    {
        const MutexLock lock(mutex_);
        isFirst = posted_.empty();
        posted_.push_back(std::move(task));
    }
    // Written under the lock, it would wake the loop only for it to wait for the lock.
    if (isFirst) eventfd_write(wakeUp_.get(), 1);
}

int EventLoop::onPosted(sd_event_source*, int fd, std::uint32_t, void* self) noexcept
{
    auto* loop = static_cast<EventLoop*>(self);
    std::vector<Task> due;
    {
        const MutexLock lock(loop->mutex_);
        eventfd_t spent = 0;
        eventfd_read(fd, &spent);
        due.swap(loop->posted_);
    }
    for (const auto& task : due) task();
    return 0;
}

MainLoop::Timer EventLoop::after(std::chrono::milliseconds delay, Task task, std::chrono::milliseconds slack)
{
    thread_.check();
    auto timer = std::make_shared<OneTimer>();
    timer->task = std::move(task);
    const std::uint64_t accuracy =
        std::max<std::uint64_t>(microseconds(slack), 1); // 0 means a quarter of a second
    check(sd_event_add_time_relative(event_.get(), out(timer->source), CLOCK_BOOTTIME, microseconds(delay),
                                     accuracy, OneTimer::onDue, timer.get()),
          "sd_event_add_time_relative");
    return timer;
}

void EventLoop::stopOn(std::initializer_list<int> signals)
{
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : signals) sigaddset(&blocked, signal);
    check(-pthread_sigmask(SIG_BLOCK, &blocked, nullptr), "pthread_sigmask");
    for (const int signal : signals) {
        check(sd_event_add_signal(event_.get(), nullptr, signal, nullptr, nullptr), "sd_event_add_signal");
    }
}

void EventLoop::run()
{
    check(sd_event_loop(event_.get()), "sd_event_loop");
}

bool EventLoop::runOnce(std::chrono::milliseconds patience)
{
    const int result = sd_event_run(event_.get(), microseconds(patience));
    check(result, "sd_event_run");
    return result > 0;
}

bool EventLoop::isOver() const
{
    return sd_event_get_state(event_.get()) == SD_EVENT_FINISHED;
}

void EventLoop::stop()
{
    thread_.check();
    sd_event_exit(event_.get(), 0);
}

} // namespace velmora
