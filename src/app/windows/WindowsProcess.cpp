// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "windows/WindowsProcess.h"

#include "bus/DBus.h"

#include <csignal>
#include <sys/epoll.h>
#include <sys/wait.h>
#include <utility>
#include <vector>

extern "C" { // which glibc 2.36 forgot to say itself
#include <sys/pidfd.h>
}

namespace velmora {

namespace {

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
    auto environment = currentEnvironment();
    std::erase_if(environment, [&](const auto& one) { return one.starts_with(variable); });
    if (!token.empty()) environment.push_back(std::string(variable) + token);
    return environment;
}

std::string fate(const siginfo_t& end)
{
    const auto number = std::to_string(end.si_status);
    return end.si_code == CLD_EXITED ? "ended with status " + number : "was ended by signal " + number;
}

} // namespace

WindowsProcess::WindowsProcess(EventLoop& loop, const std::filesystem::path& program,
                               const WindowRequest& request, Ended ended)
    : ended_(std::move(ended)), child_(spawn(argumentsFor(program, request), environmentWith(request.token)))
{
    dbus::check(sd_event_add_io(loop.handle(), out(source_), child_.process.get(), EPOLLIN, onEnd, this),
                "sd_event_add_io");
}

void WindowsProcess::kill() const
{
    pidfd_send_signal(child_.process.get(), SIGKILL, nullptr, 0);
}

int WindowsProcess::onEnd(sd_event_source*, int, std::uint32_t, void* self) noexcept
{
    const auto* process = static_cast<WindowsProcess*>(self);
    siginfo_t end{};
    if (waitid(P_PID, static_cast<id_t>(process->child_.id), &end, WEXITED | WNOHANG) == 0 && end.si_pid == 0)
        return 0;
    const auto ended = process->ended_; // the process goes in it
    ended({fate(end), end.si_code == CLD_EXITED && end.si_status == 0});
    return 0;
}

} // namespace velmora
