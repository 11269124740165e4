// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/HelperRun.h"

#include "base/Spawn.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace velmora {

namespace {

using Clock = std::chrono::steady_clock;

/// What a child says until it ends.
class Listening {
public:
    Listening(const Child& child, int pipe, int stop, HelperRun::Bounds bounds, const HelperRun::Sink& sink)
        : child_(child), pipe_(pipe), stop_(stop), bounds_(bounds), sink_(sink)
    {
    }

    /// Nothing where it ended by itself; otherwise why it has to be ended.
    std::optional<std::string> toItsEnd()
    {
        const auto deadline = Clock::now() + bounds_.patience;
        while (true) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            if (left <= left.zero()) return "did not end in time and was killed";
            std::array<pollfd, 3> sources{
                {{pipe_, POLLIN, 0}, {child_.process.get(), POLLIN, 0}, {stop_, POLLIN, 0}}};
            const int ready = poll(sources.data(), sources.size(), static_cast<int>(left.count()));
            if (ready < 0 && errno != EINTR) return "could not be followed and was killed";
            if (ready <= 0) continue;
            if (sources[2].revents) return "";
            if (sources[0].revents && !readSome()) return "said too much and was killed";
            if (sources[1].revents) return readRest();
        }
    }

private:
    std::optional<std::string> readRest()
    {
        while (pipe_ >= 0 && isMore_)
            if (!readSome()) return "said too much and was killed";
        return std::nullopt;
    }

    /// Whether what it said is within bounds.
    bool readSome()
    {
        std::array<char, 16'384> buffer{};
        const auto bytes = read(pipe_, buffer.data(), buffer.size());
        isMore_ = bytes > 0;
        if (bytes == 0) pipe_ = -1; // which poll passes over
        if (bytes <= 0) return true;
        taken_ += static_cast<std::size_t>(bytes);
        if (taken_ > bounds_.bytes) return false;
        sink_({buffer.data(), static_cast<std::size_t>(bytes)});
        return true;
    }

    const Child& child_;
    int pipe_; ///< negative once it was closed
    int stop_;
    HelperRun::Bounds bounds_;
    const HelperRun::Sink& sink_;
    std::size_t taken_ = 0;
    bool isMore_ = true;
};

/// Empty for status 0.
std::string fateOf(pid_t id)
{
    int status = 0;
    while (waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) return "was ended by signal " + std::to_string(WTERMSIG(status));
    return WEXITSTATUS(status) == 0 ? "" : "ended with status " + std::to_string(WEXITSTATUS(status));
}

} // namespace

HelperRun::HelperRun() : stop_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!stop_) throw std::system_error(errno, std::generic_category(), "eventfd");
}

std::string HelperRun::run(const std::vector<std::string>& arguments, Bounds bounds, const Sink& sink)
try {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) < 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    const FileDescriptor pipe(ends[0]);
    FileDescriptor childsEnd(ends[1]);
    // The child is to wait where the pipe is full.
    fcntl(childsEnd.get(), F_SETFL, 0);
    const Child child = spawn(arguments, currentEnvironment(), childsEnd.get());
    childsEnd.close();
    const auto why = Listening(child, pipe.get(), stop_.get(), bounds, sink).toItsEnd();
    if (why) kill(child.id, SIGKILL); // not reaped yet, so that the number is still its own
    const auto fate = fateOf(child.id);
    return why.value_or(fate);
} catch (const std::system_error& failure) {
    return std::string("could not be run: ") + failure.what();
}

void HelperRun::stop()
{
    eventfd_write(stop_.get(), 1);
}

void HelperRun::allow()
{
    eventfd_t spent = 0;
    eventfd_read(stop_.get(), &spent);
}

bool HelperRun::isStopped() const
{
    pollfd source{stop_.get(), POLLIN, 0};
    return poll(&source, 1, 0) > 0;
}

} // namespace velmora
