// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "windows/WindowsProcess.h"

#include "bus/DBus.h"

#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/wait.h>
#include <utility>
#include <vector>

extern "C" { // which glibc 2.36 forgot to say itself
#include <sys/pidfd.h>
}

namespace velmora {

namespace {

/// Arguments and environment as posix_spawn takes them; the strings must outlive the result.
std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (auto& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> argumentsFor(const std::filesystem::path& program, const WindowRequest& request)
{
    const auto* option = request.isToggle ? "--toggle" : request.takesFocus ? "--show" : "--show-inactive";
    std::vector<std::string> arguments{program, option, request.window};
    if (request.at) {
        arguments.emplace_back("--at");
        arguments.push_back(std::to_string(request.at->x) + "," + std::to_string(request.at->y));
    }
    return arguments;
}

std::vector<std::string> environmentWith(const std::string& token)
{
    constexpr std::string_view variable = "XDG_ACTIVATION_TOKEN=";
    std::vector<std::string> environment;
    for (char** one = environ; one && *one; ++one) {
        if (!std::string_view(*one).starts_with(variable)) environment.emplace_back(*one);
    }
    if (!token.empty()) environment.push_back(std::string(variable) + token);
    return environment;
}

/// The loop takes its signals from a descriptor and has them blocked; a child must not inherit that.
class SpawnAttributes {
public:
    SpawnAttributes()
    {
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

pid_t spawn(const std::filesystem::path& program, const WindowRequest& request)
{
    auto arguments = argumentsFor(program, request);
    auto environment = environmentWith(request.token);
    pid_t id = -1;
    dbus::check(-posix_spawn(&id, program.c_str(), nullptr, SpawnAttributes().get(),
                             pointers(arguments).data(), pointers(environment).data()),
                program.c_str());
    return id;
}

std::string fate(const siginfo_t& end)
{
    const auto number = std::to_string(end.si_status);
    return end.si_code == CLD_EXITED ? "ended with status " + number : "was ended by signal " + number;
}

} // namespace

WindowsProcess::WindowsProcess(EventLoop& loop, const std::filesystem::path& program,
                               const WindowRequest& request, Ended ended)
    : ended_(std::move(ended)), id_(spawn(program, request)), descriptor_(pidfd_open(id_, 0))
{
    dbus::check(descriptor_ ? 0 : -errno, "pidfd_open");
    dbus::check(sd_event_add_io(loop.handle(), out(source_), descriptor_.get(), EPOLLIN, onEnd, this),
                "sd_event_add_io");
}

void WindowsProcess::kill() const
{
    pidfd_send_signal(descriptor_.get(), SIGKILL, nullptr, 0);
}

int WindowsProcess::onEnd(sd_event_source*, int, std::uint32_t, void* self) noexcept
{
    const auto* process = static_cast<WindowsProcess*>(self);
    siginfo_t end{};
    if (waitid(P_PID, static_cast<id_t>(process->id_), &end, WEXITED | WNOHANG) == 0 && end.si_pid == 0)
        return 0;
    const auto ended = process->ended_; // the process goes in it
    ended({fate(end), end.si_code == CLD_EXITED && end.si_status == 0});
    return 0;
}

} // namespace velmora
