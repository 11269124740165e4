// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/Browser.h"

#include "base/CoreDumps.h"
#include "bus/DBus.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <sys/epoll.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "Browser";
constexpr auto program = "xdg-open";

/// In the folders of PATH; empty where it is in none.
std::string found()
{
    const char* path = std::getenv("PATH");
    std::string_view rest = path ? path : "/usr/local/bin:/usr/bin:/bin";
    while (!rest.empty()) {
        const auto end = std::min(rest.find(':'), rest.size());
        const auto file = std::filesystem::path(rest.substr(0, end)) / program;
        if (file.is_absolute() && access(file.c_str(), X_OK) == 0) return file;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return {};
}

/// What was said to this program is not for the browser: our own variables, and those of the service manager.
bool isOwn(std::string_view variable)
{
    constexpr std::array<std::string_view, 10> beginnings{
        "VELMORA_",    "XDG_ACTIVATION_TOKEN=", "NOTIFY_SOCKET=",  "WATCHDOG_",
        "LISTEN_",     "INVOCATION_ID=",        "JOURNAL_STREAM=", "SYSTEMD_EXEC_PID=",
        "MANAGERPID=", "CREDENTIALS_DIRECTORY="};
    return std::ranges::any_of(beginnings, [&](auto beginning) { return variable.starts_with(beginning); });
}

std::vector<std::string> environmentWith(const std::string& anchor)
{
    auto environment = currentEnvironment();
    std::erase_if(environment, isOwn);
    if (!anchor.empty()) environment.push_back("XDG_ACTIVATION_TOKEN=" + anchor);
    return environment;
}

} // namespace

/// One run of the program, until its end has been seen.
struct Browser::Run {
    Child child;
    std::function<void()> failed;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    Browser* browser = nullptr;
    Handle<sd_event_source, sd_event_source_disable_unref> source{};
};

Browser::Browser(EventLoop& loop, std::shared_ptr<Log> log) : loop_(loop), log_(std::move(log)) {}

bool Browser::open(const std::string& url, const std::string& anchor, std::function<void()> failed)
try {
    const auto file = found();
    if (file.empty()) {
        log_->error(category, std::string(program) + " is in no folder of PATH, so that no browser is "
                                                     "opened: the package xdg-utils has it.");
        return false;
    }
    auto run = std::make_shared<Run>(
        Run{.child = spawn({file, url}, environmentWith(anchor)), .failed = std::move(failed)});
    restoreCoreDumps(run->child.id);
    loop_.post(lifetime_.guard([this, run = std::move(run)] { watch(run); }));
    return true;
} catch (const std::system_error& error) {
    log_->error(category, std::string("Could not start ") + error.what() + ": no browser is opened.");
    return false;
}

void Browser::watch(const std::shared_ptr<Run>& run)
{
    run->browser = this;
    if (sd_event_add_io(loop_.handle(), out(run->source), run->child.process.get(), EPOLLIN, onEnd,
                        run.get()) < 0)
        return; // it is reaped with this program
    runs_.push_back(run);
}

int Browser::onEnd(sd_event_source*, int, std::uint32_t, void* ended) noexcept
{
    auto* self = static_cast<Run*>(ended)->browser;
    siginfo_t end{};
    const auto id = static_cast<id_t>(static_cast<Run*>(ended)->child.id);
    if (waitid(P_PID, id, &end, WEXITED | WNOHANG) == 0 && end.si_pid == 0) return 0;
    const auto found = std::ranges::find_if(self->runs_, [&](const auto& run) { return run.get() == ended; });
    const auto run = std::move(*found);
    self->runs_.erase(found);
    const bool isFailure = end.si_code != CLD_EXITED || end.si_status != 0;
    if (!isFailure || std::chrono::steady_clock::now() - run->start > latestFailure) return 0;
    self->log_->error(category, std::string(program) + " ended with " +
                                    (end.si_code == CLD_EXITED ? "status " : "signal ") +
                                    std::to_string(end.si_status) + ": no browser is opened.");
    if (run->failed) run->failed();
    return 0;
}

} // namespace velmora
